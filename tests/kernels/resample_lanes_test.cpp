#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kernels/levels.h"
#include "kernels/signals.h"
#include "resample/lane_resampler.h"
#include "resample/resample_filter_table.h"
#include "resample/resampler.h"

namespace {

using namespace sorvo::audio;

struct Rates {
    int dst;
    int src;
};

class ResampleLanes : public ::testing::TestWithParam<Rates> {};

std::vector<float> plain(const std::vector<float>& src, Rates rates, std::size_t n) {
    std::vector<float> dst(n, 9.0F);
    resample_plain(dst.data(), src.data(), rates.dst, static_cast<int>(n), rates.src,
                   static_cast<int>(src.size()));
    return dst;
}

TEST_P(ResampleLanes, EqualOneOutputAfterTheOther) {
    const Rates rates = GetParam();
    for (const std::size_t src_n : {700U, 9001U}) {
        const auto full_n = static_cast<std::size_t>(
            get_resample_len(rates.dst, static_cast<int>(src_n), rates.src));
        for (const test::Signal& signal : test::test_signals(src_n)) {
            // Cut short, and beyond the end.
            for (const std::size_t dst_n : {full_n / 2 + 1, full_n + 5}) {
                const std::vector<float> expected = plain(signal.x, rates, dst_n);
                test::for_each_level([&](SimdLevel level) {
                    std::vector<float> dst(dst_n + 1, 9.0F);
                    resample(dst.data(), signal.x.data(), rates.dst, static_cast<int>(dst_n),
                             rates.src, static_cast<int>(src_n), level);
                    EXPECT_EQ(dst.back(), 9.0F);
                    dst.pop_back();
                    EXPECT_EQ(test::first_difference(dst, expected), test::none)
                        << signal.name << ", " << src_n << " to " << dst_n;
                });
            }
        }
    }
}

TEST_P(ResampleLanes, WorkForAnyNumberOfOutputs) {
    const Rates rates = GetParam();
    const TapGroups& table = ResampleFilterTable::instance().ref_groups(rates.dst, rates.src);
    const std::vector<float> src = test::noise(2000, 1.0F);
    const std::size_t reachable_n =
        1999 * static_cast<std::size_t>(rates.dst) / static_cast<std::size_t>(rates.src);
    const std::vector<float> expected = plain(src, rates, reachable_n);
    for (std::size_t n = 1; n <= std::min<std::size_t>(reachable_n, 2100); n += n < 70 ? 1 : 83) {
        test::for_each_level([&](SimdLevel level) {
            std::vector<float> dst(n + 1, 9.0F);
            resample_lanes(dst.data(), src.data(), n, src.size(), table, level);
            EXPECT_EQ(dst[n], 9.0F);
            EXPECT_TRUE(std::equal(expected.begin(),
                                   expected.begin() + static_cast<std::ptrdiff_t>(n), dst.begin()))
                << n;
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, ResampleLanes,
                         ::testing::Values(Rates{16000, 44100}, Rates{16000, 48000}, Rates{1, 2},
                                           Rates{3, 1}, Rates{48000, 44100}, Rates{1, 1},
                                           Rates{4, 1}, Rates{33, 32}, Rates{38, 101}, Rates{1, 15},
                                           Rates{1, 16}, Rates{2, 331}, Rates{127, 2}),
                         [](const auto& rates) {
                             return std::to_string(rates.param.src) + "_to_" +
                                    std::to_string(rates.param.dst);
                         });

}  // namespace
