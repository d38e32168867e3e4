// Every level makes what the definition does, bit for bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "resample/lane_resampler.h"
#include "resample/resample_filter_table.h"
#include "resample/resampler.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/levels.h"
#include "support/signals.h"

namespace {

using namespace sorvo::audio;
using sorvo::test::Guarded;
using sorvo::test::same_bits;

class ResampleLevels : public sorvo::test::AtLevel {};

struct Rates {
    int dst;
    int src;
};

constexpr Rates all_rates[] = {{16000, 44100}, {16000, 48000}, {1, 2},   {3, 1},    {48000, 44100},
                               {1, 1},         {4, 1},         {33, 32}, {38, 101}, {1, 15},
                               {1, 16},        {2, 331},       {127, 2}};

std::vector<float> defined(const std::vector<float>& src, Rates rates, std::size_t n) {
    std::vector<float> dst(n);
    resample_plain(dst.data(), src.data(), rates.dst, static_cast<int>(n), rates.src,
                   static_cast<int>(src.size()));
    return dst;
}

std::string described(Rates rates, std::size_t src_n, std::size_t dst_n) {
    return std::to_string(rates.src) + " to " + std::to_string(rates.dst) + ", " +
           std::to_string(src_n) + " to " + std::to_string(dst_n) + " samples";
}

TEST_P(ResampleLevels, EqualTheDefinition) {
    for (const Rates rates : all_rates) {
        for (const std::size_t src_n : {700U, 9001U}) {
            const auto full_n = static_cast<std::size_t>(
                get_resample_len(rates.dst, static_cast<int>(src_n), rates.src));
            for (const auto& signal : sorvo::test::awkward_signals(src_n)) {
                // Cut short, and beyond the end.
                for (const std::size_t dst_n : {full_n / 2 + 1, full_n + 5}) {
                    Guarded<float> dst(dst_n);
                    resample(dst, signal.x.data(), rates.dst, static_cast<int>(dst_n), rates.src,
                             static_cast<int>(src_n), GetParam());
                    EXPECT_TRUE(dst.filled());
                    EXPECT_TRUE(same_bits(dst.values(), defined(signal.x, rates, dst_n)))
                        << signal.name << ", " << described(rates, src_n, dst_n);
                }
            }
        }
    }
}

TEST_P(ResampleLevels, MakeAnyNumberOfOutputs) {
    for (const Rates rates : all_rates) {
        const TapGroups& table = ResampleFilterTable::instance().ref_groups(rates.dst, rates.src);
        const std::vector<float> src = sorvo::test::noise(2000);
        const std::size_t reachable_n =
            1999 * static_cast<std::size_t>(rates.dst) / static_cast<std::size_t>(rates.src);
        std::vector<float> expected = defined(src, rates, std::min<std::size_t>(reachable_n, 2100));
        while (!expected.empty()) {
            const std::size_t n = expected.size();
            Guarded<float> dst(n);
            resample_lanes(dst, src.data(), n, src.size(), table, GetParam());
            EXPECT_TRUE(dst.filled());
            EXPECT_TRUE(same_bits(dst.values(), expected)) << described(rates, src.size(), n);
            expected.resize(n - (n > 70 ? std::min<std::size_t>(n - 70, 83) : 1));
        }
    }
}

SORVO_TEST_AT_ALL_LEVELS(ResampleLevels);

}  // namespace
