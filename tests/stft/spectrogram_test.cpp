#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "sorvo_audio.h"
#include "stft/analysis_case.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/random.h"
#include "support/reference.h"

namespace {

using namespace sorvo::test;

class Spectrogram : public testing::TestWithParam<AnalysisCase> {};

TEST_P(Spectrogram, MatchesTheDefinition) {
    const auto& [shape, center, norm] = GetParam();
    Random random(static_cast<unsigned>(shape.fft_n));
    const std::vector<float> x = random.values(static_cast<std::size_t>(shape.sample_n));
    const std::size_t frame_n = frames_of(shape, center);
    const std::size_t value_n = static_cast<std::size_t>(shape.fft_n / 2 + 1) * frame_n;
    for (const int win_type : {SORVO_AUDIO_WINDOW_HANN, SORVO_AUDIO_WINDOW_HAMMING}) {
        const auto spectra = reference_stft(x, shape, win_type, center, norm);
        for (const float power : {0.0F, 0.5F, 1.0F, 2.0F}) {
            SCOPED_TRACE(testing::Message() << "window " << win_type << " power " << power);
            Guarded<float> out(2 * value_n);
            ASSERT_EQ(sorvoAudioGetSpectrogram(out, x.data(), shape.sample_n, shape.fft_n,
                                               shape.hop_n, shape.win_n, win_type,
                                               static_cast<int>(frame_n), center, power, norm),
                      SORVO_AUDIO_OK);
            EXPECT_TRUE(out.filled());
            reference::Complexes actual(value_n);
            reference::Complexes expected(value_n);
            for (std::size_t i = 0; i < value_n; ++i) {
                actual[i] = {out.data()[2 * i], out.data()[2 * i + 1]};
                expected[i] = power == 0.0F ? spectra[i] : std::pow(std::abs(spectra[i]), power);
                if (power > 0.0F) {
                    EXPECT_EQ(bits_of(out.data()[2 * i + 1]), 0U);
                }
            }
            EXPECT_LT(relative_l2(actual, expected), 5e-7);  // measured 3.7e-7
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Spectrogram,
    testing::Combine(testing::Values(Shape{40, 8, 2, 8}, Shape{41, 8, 3, 8},     // power of two
                                     Shape{50, 12, 5, 9}, Shape{50, 16, 4, 15},  // odd difference
                                     Shape{33, 15, 4, 6}, Shape{30, 16, 5, 8},   // short windows
                                     Shape{20, 8, 4, 13}, Shape{37, 9, 1, 12},   // long windows
                                     Shape{9, 9, 20, 9}, Shape{2, 2, 1, 2}, Shape{1, 1, 1, 3},
                                     Shape{1500, 400, 160, 400}, Shape{2500, 1024, 256, 800}),
                     testing::Values(0, 1, 2), testing::Values(0, 1, 2)),
    name_of);

TEST(Spectrogram, WritesOnlyTheColumnsThatThereAre) {
    const Shape shape{64, 16, 8, 16};
    Random random(3);
    const std::vector<float> x = random.values(64);
    const auto spectrogram = [&](int max_frame_n) {
        Guarded<float> out(9 * 2 * static_cast<std::size_t>(max_frame_n));
        EXPECT_EQ(sorvoAudioGetSpectrogram(out, x.data(), shape.sample_n, shape.fft_n, shape.hop_n,
                                           shape.win_n, 1, max_frame_n, 0, 0.0F, 0),
                  SORVO_AUDIO_OK);
        return out;
    };
    const std::vector<float> whole = spectrogram(7).values();
    for (const int max_frame_n : {1, 3, 7, 11}) {
        Guarded<float> out = spectrogram(max_frame_n);
        const auto row = 2 * static_cast<std::size_t>(max_frame_n);
        std::vector<float> expected = Guarded<float>(out.size()).values();
        for (std::size_t k = 0; k < 9; ++k) {
            for (std::size_t i = 0; i < std::min<std::size_t>(row, 14); ++i) {
                expected[k * row + i] = whole[k * 14 + i];
            }
        }
        EXPECT_TRUE(same_bits(out.values(), expected)) << max_frame_n;
    }
}

TEST(Spectrogram, OfNoFrameWritesNothing) {
    const std::vector<float> x(20, 1.0F);
    for (const int center : {0, 1, 2}) {
        Guarded<float> out(64);
        EXPECT_EQ(sorvoAudioGetSpectrogram(out, x.data(), 7, 8, 2, 8, 1, 4, center, 1.0F, 0), 0);
        EXPECT_EQ(sorvoAudioGetSpectrogram(out, x.data(), 20, 8, 0, 8, 1, 4, center, 1.0F, 0), 0);
        EXPECT_TRUE(out.untouched()) << center;
    }
}

TEST(Spectrogram, TakesANanPowerForComplexOutput) {
    Random random(4);
    const std::vector<float> x = random.values(16);
    Guarded<float> nan(2 * 9);
    Guarded<float> zero(2 * 9);
    const float quiet = std::numeric_limits<float>::quiet_NaN();
    ASSERT_EQ(sorvoAudioGetSpectrogram(nan, x.data(), 16, 16, 16, 16, 1, 1, 0, quiet, 0), 0);
    ASSERT_EQ(sorvoAudioGetSpectrogram(zero, x.data(), 16, 16, 16, 16, 1, 1, 0, 0.0F, 0), 0);
    EXPECT_TRUE(same_bits(nan.values(), zero.values()));
}

// Float arithmetic counts a frame too many here; its last sample does not exist and counts as 0.
TEST(Spectrogram, CountsSamplesPastTheEndAsZero) {
    constexpr int fft_n = 8;
    constexpr int hop_n = (1 << 22) + 1;
    constexpr int sample_n = (1 << 24) + 3 + fft_n;
    std::vector<float> x(sample_n);
    std::vector<float> last(fft_n);  // what the fifth frame should be
    for (std::size_t i = 0; i + 1 < last.size(); ++i) {
        x[4 * static_cast<std::size_t>(hop_n) + i] = last[i] = static_cast<float>(i + 1);
    }
    Guarded<float> out(2 * 5 * 5);
    ASSERT_EQ(sorvoAudioGetSpectrogram(out, x.data(), sample_n, fft_n, hop_n, 8, 2, 5, 0, 0, 0), 0);
    Guarded<float> expected(2 * 5);
    ASSERT_EQ(sorvoAudioGetSpectrogram(expected, last.data(), fft_n, fft_n, 8, 8, 2, 1, 0, 0, 0),
              0);
    for (std::size_t k = 0; k < 5; ++k) {
        EXPECT_EQ(out.data()[(k * 5 + 4) * 2], expected.data()[2 * k]) << k;
        EXPECT_EQ(out.data()[(k * 5 + 4) * 2 + 1], expected.data()[2 * k + 1]) << k;
    }
}

}  // namespace
