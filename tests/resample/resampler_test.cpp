#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/random.h"
#include "support/reference.h"
#include "support/sanitizer.h"

namespace {

using namespace sorvo::test;

int resample_len(int dst_rate, int src_n, int src_rate) {
    int n = -1;
    EXPECT_EQ(sorvoAudioGetResampleLen(&n, dst_rate, src_n, src_rate), SORVO_AUDIO_OK);
    return n;
}

std::vector<float> resampled(const std::vector<float>& x, int dst_rate, int src_rate) {
    const int src_n = static_cast<int>(x.size());
    const int dst_n = resample_len(dst_rate, src_n, src_rate);
    Guarded<float> y(static_cast<std::size_t>(dst_n));
    EXPECT_EQ(sorvoAudioResample(y, x.data(), dst_rate, dst_n, src_rate, src_n), SORVO_AUDIO_OK);
    EXPECT_TRUE(y.filled());
    return y.values();
}

struct RateCase {
    int src_rate, dst_rate;
    double hz;       // of a sine
    double min_snr;  // in dB
};

std::string name_of(const testing::TestParamInfo<RateCase>& info) {
    return std::to_string(info.param.src_rate) + "_to_" + std::to_string(info.param.dst_rate) +
           "_at_" + std::to_string(static_cast<int>(info.param.hz)) + "Hz";
}

class Resampler : public testing::TestWithParam<RateCase> {
  protected:
    const int src_rate_ = GetParam().src_rate;
    const int dst_rate_ = GetParam().dst_rate;
    const long double step_ = static_cast<long double>(src_rate_) / dst_rate_;
    const int up_ = dst_rate_ / std::gcd(src_rate_, dst_rate_);
    /// For even `up` every output lies half a phase early.
    const long double shift_ = up_ % 2 == 0 ? -0.5L / up_ : 0.0L;
};

// Outputs whose nearest input sample is the last one, or would lie behind it, are zero.
TEST_P(Resampler, MatchesTheInterpolationOfEveryOutputTime) {
    Random random(41);
    for (const std::size_t n : {1U, 2U, 3U, 20U, 400U}) {
        const std::vector<float> x = random.values(n);
        const std::vector<float> y = resampled(x, dst_rate_, src_rate_);
        reference::Reals expected(y.size());
        for (std::size_t i = 0; i < y.size(); ++i) {
            const long double time = static_cast<long double>(i) * step_ + shift_;
            if (std::lround(time) + 1 < static_cast<long>(n)) {
                expected[i] = reference::interpolate(x, time, std::min(1.0L, 1 / step_));
            }
        }
        EXPECT_LT(relative_l2(y, expected), 1e-7) << n;  // measured 5.0e-8
    }
}

TEST_P(Resampler, KeepsFrequencyAndLevelOfASine) {
    const RateCase& c = GetParam();
    std::vector<float> x(4000);
    const double turn = 2 * M_PI * c.hz / src_rate_;
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = static_cast<float>(std::sin(turn * static_cast<double>(i) + 0.3));
    }
    const std::vector<float> y = resampled(x, dst_rate_, src_rate_);
    double signal = 0.0;
    double noise = 0.0;
    const auto margin = static_cast<std::size_t>(40 / step_ + 40);
    for (std::size_t i = margin; i + margin < y.size(); ++i) {
        const double time = static_cast<double>(static_cast<long double>(i) * step_ + shift_);
        const double expected = std::sin(turn * time + 0.3);
        signal += expected * expected;
        noise += (double{y[i]} - expected) * (double{y[i]} - expected);
    }
    const double snr = 10 * std::log10(signal / noise);
    EXPECT_GT(snr, c.min_snr);
}

INSTANTIATE_TEST_SUITE_P(Rates, Resampler,
                         testing::Values(RateCase{16000, 16000, 1000, 151.0},   // measured 152.8
                                         RateCase{16000, 8000, 1000, 99.0},     // measured 100.1
                                         RateCase{16000, 8000, 3000, 74.0},     // measured 75.4
                                         RateCase{8000, 16000, 1000, 121.0},    // measured 122.3
                                         RateCase{8000, 16000, 3500, 71.0},     // measured 72.4
                                         RateCase{44100, 16000, 1000, 106.0},   // measured 107.5
                                         RateCase{16000, 44100, 1000, 131.0},   // measured 132.7
                                         RateCase{44100, 48000, 1000, 120.0},   // measured 121.9
                                         RateCase{48000, 44100, 15000, 105.0},  // measured 106.7
                                         RateCase{7, 3, 0.5, 95.0},             // measured 96.3
                                         RateCase{3, 7, 0.5, 118.0},            // measured 119.2
                                         RateCase{1000, 4000, 100, 116.0}),     // measured 117.5
                         name_of);

TEST(Resampler, AtEqualRatesCopiesAllButTheLastSample) {
    Random random(42);
    std::vector<float> x = random.values(50);
    const std::vector<float> y = resampled(x, 12345, 12345);
    x.back() = 0.0F;
    for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(y[i], x[i], 1e-15) << i;
}

TEST(Resampler, FillsTheRestWithZerosAndStopsAtTheRoom) {
    Random random(43);
    const std::vector<float> x = random.values(50);
    const std::vector<float> whole = resampled(x, 3, 2);  // 75 samples
    for (const std::size_t n : {1U, 74U, 90U}) {
        Guarded<float> y(n);
        ASSERT_EQ(sorvoAudioResample(y, x.data(), 3, static_cast<int>(n), 2, 50), 0);
        EXPECT_TRUE(y.filled());
        std::vector<float> expected = whole;
        expected.resize(n);
        EXPECT_TRUE(same_bits(y.values(), expected)) << n;
    }
}

TEST(Resampler, RefusesAFilterTableThatNoMemoryHolds) {
    if (!memory_can_be_refused) GTEST_SKIP() << "under a sanitizer";
    const std::vector<float> x(4, 1.0F);
    Guarded<float> y(4);
    for (int repeat = 0; repeat < 2; ++repeat) {
        EXPECT_EQ(sorvoAudioResample(y, x.data(), INT_MAX, 4, INT_MAX - 1, 4),
                  SORVO_AUDIO_ERROR_MEMORY);
    }
    EXPECT_EQ(sorvoAudioResample(y, x.data(), 1, 4, INT_MAX, 4), SORVO_AUDIO_OK);
}

TEST(ResampleLen, RoundsUpTheDoubleProduct) {
    const struct {
        int dst_rate, src_n, src_rate, expected;
    } cases[] = {
        {16000, 16000, 44100, 5805},
        {8000, 1, 16000, 1},
        {1, INT_MAX, 1, INT_MAX},
        {INT_MAX, 1, 1, INT_MAX},
        {1, 1, INT_MAX, 1},
        {44100, 48000, 48000, 44100},
        {7, 75, 25, 22},  // 0.28 * 75 is a little more than 21
    };
    for (const auto& c : cases) {
        EXPECT_EQ(resample_len(c.dst_rate, c.src_n, c.src_rate), c.expected) << c.dst_rate;
    }
    // Elsewhere it is the exact quotient rounded up.
    for (int dst_rate = 1; dst_rate < 40; ++dst_rate) {
        for (int src_n = 1; src_n < 40; ++src_n) {
            for (const int src_rate : {1, 2, 8, 32, 1024}) {
                EXPECT_EQ(resample_len(dst_rate, src_n, src_rate),
                          (dst_rate * src_n + src_rate - 1) / src_rate);
            }
        }
    }
}

TEST(ResampleLen, ThatDoesNotFitAnIntIsAnError) {
    Guarded<int> n(1);
    EXPECT_EQ(sorvoAudioGetResampleLen(n, 2, 1 << 30, 1), SORVO_AUDIO_ERROR_INTERNAL);
    EXPECT_EQ(sorvoAudioGetResampleLen(n, INT_MAX, INT_MAX, 1), SORVO_AUDIO_ERROR_INTERNAL);
    EXPECT_TRUE(n.untouched());
}

}  // namespace
