#include "resample/resample_filter_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "support/reference.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

struct Ratio {
    int dst, src;
};

class ResampleFilter : public testing::TestWithParam<Ratio> {
  protected:
    const int dst_ = GetParam().dst;
    const int src_ = GetParam().src;
    const int up_ = dst_ / std::gcd(dst_, src_);
    const int down_ = src_ / std::gcd(dst_, src_);
    ResampleFilterTable& table_ = ResampleFilterTable::instance();
};

// Output i lies at i down / up samples, half a phase early where `up` is even.
TEST_P(ResampleFilter, SchedulesTheOutputTimes) {
    const std::vector<int>& diff = table_.ref_diff(dst_, src_);
    const std::vector<int>& kiro = table_.ref_kiro(dst_, src_);
    ASSERT_EQ(diff.size(), static_cast<std::size_t>(up_));
    ASSERT_EQ(kiro.size(), static_cast<std::size_t>(up_));
    long position = 0;
    for (int i = 0; i < 2 * up_; ++i) {
        const auto slot = static_cast<std::size_t>(i % up_);
        // In units of half a phase everything is an integer.
        const long time = 2 * position * up_ + 2L * kiro[slot] - (up_ - 1);
        EXPECT_EQ(time, 2L * i * down_ - (up_ % 2 == 0 ? 1 : 0)) << i;
        position += diff[slot];
    }
    EXPECT_EQ(position, 2L * down_);
}

TEST_P(ResampleFilter, HoldsWindowedSincs) {
    const auto& coef = table_.ref_coef(dst_, src_);
    ASSERT_EQ(coef.size(), static_cast<std::size_t>(up_));
    const long double fc = std::min(1.0L, static_cast<long double>(dst_) / src_);
    for (int p = 0; p < up_; ++p) {
        const std::vector<double>& taps = coef[static_cast<std::size_t>(p)];
        ASSERT_EQ(taps.size(), 65U);
        for (int k = 0; k < 65; ++k) {
            const long double t = k - 32 + (p - (up_ - 1) / 2.0L) / up_;
            EXPECT_NEAR(taps[static_cast<std::size_t>(k)],
                        static_cast<double>(reference::windowed_sinc(t, fc)), 3e-16)
                << p << " " << k;
        }
    }
}

TEST_P(ResampleFilter, IsBuiltOncePerReducedRatio) {
    EXPECT_EQ(&table_.ref_coef(dst_, src_), &table_.ref_coef(up_, down_));
    EXPECT_EQ(&table_.ref_diff(dst_, src_), &table_.ref_diff(2 * dst_, 2 * src_));
    EXPECT_EQ(&table_.ref_kiro(dst_, src_), &table_.ref_kiro(dst_, src_));
    EXPECT_EQ(table_.detect_idx(dst_, src_), table_.detect_idx(up_, down_));
    EXPECT_NE(&table_.ref_coef(dst_, src_), &table_.ref_coef(up_ + down_, down_));
}

INSTANTIATE_TEST_SUITE_P(Ratios, ResampleFilter,
                         testing::Values(Ratio{16000, 16000}, Ratio{8000, 16000},
                                         Ratio{16000, 8000}, Ratio{44100, 48000},
                                         Ratio{48000, 44100}, Ratio{3, 7}, Ratio{7, 3}, Ratio{5, 2},
                                         Ratio{16000, 44100}),
                         [](const auto& ratio) {
                             return std::to_string(ratio.param.src) + "_to_" +
                                    std::to_string(ratio.param.dst);
                         });

TEST(ResampleFilter, AnswersZeroForWhatWasNeverBuilt) {
    EXPECT_EQ(ResampleFilterTable::instance().detect_idx(99991, 99989), 0U);
}

}  // namespace
