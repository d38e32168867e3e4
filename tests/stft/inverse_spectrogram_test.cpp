#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <vector>

#include "sorvo_audio.h"
#include "stft/analysis_case.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/random.h"
#include "support/reference.h"

namespace {

using namespace sorvo::test;

std::vector<float> first(std::size_t n, const std::vector<float>& values) {
    return {values.begin(), values.begin() + static_cast<std::ptrdiff_t>(n)};
}

class InverseSpectrogram : public testing::TestWithParam<AnalysisCase> {
  protected:
    const Shape shape_ = std::get<0>(GetParam());
    const int center_ = std::get<1>(GetParam());
    const int norm_ = std::get<2>(GetParam());
    const int freq_n_ = shape_.fft_n / 2 + 1;
    Random random_{static_cast<unsigned>(shape_.fft_n)};

    int invert(float* dst, const std::vector<float>& spectra, int frame_n, int win_type, int n) {
        return sorvoAudioGetInverseSpectrogram(dst, spectra.data(), frame_n, freq_n_, shape_.hop_n,
                                               shape_.win_n, win_type, n, center_, norm_);
    }
};

// Any numbers are a spectrogram, also ones that no signal has. Where the windows add up to little,
// a division by it magnifies what float windows lack; weighting by it compares everything alike.
TEST_P(InverseSpectrogram, MatchesTheDefinition) {
    const auto fft_n = static_cast<std::size_t>(shape_.fft_n);
    const std::size_t frame_n = 6;
    const auto spectra = random_.values(2 * frame_n * static_cast<std::size_t>(freq_n_));
    reference::Complexes wide(spectra.size() / 2);
    for (std::size_t i = 0; i < wide.size(); ++i) {
        wide[i] = {spectra[2 * i], spectra[2 * i + 1]};
    }
    const std::size_t length = (frame_n - 1) * static_cast<std::size_t>(shape_.hop_n) + fft_n;
    const std::size_t dropped = center_ == 0 ? 0 : fft_n / 2;
    for (const int win_type : {SORVO_AUDIO_WINDOW_HANN, SORVO_AUDIO_WINDOW_HAMMING}) {
        SCOPED_TRACE(win_type);
        const reference::Synthesis expected = reference::istft(
            wide, frame_n, fft_n, static_cast<std::size_t>(shape_.hop_n),
            static_cast<std::size_t>(shape_.win_n), win_type, norm_ == 2 ? fft_n / 2.0L : 1.0L);
        std::vector<float> whole(length);
        ASSERT_EQ(invert(whole.data(), spectra, 6, win_type, static_cast<int>(length)), 0);
        reference::Reals weighted;
        reference::Reals weighted_expected;
        for (std::size_t i = 0; i + dropped < length; ++i) {
            weighted.push_back(whole[i] * expected.weight[i + dropped]);
            weighted_expected.push_back(expected.signal[i + dropped] *
                                        expected.weight[i + dropped]);
        }
        EXPECT_LT(relative_l2(weighted, weighted_expected), 4e-7);  // measured 2.5e-7
        EXPECT_EQ(
            std::vector<float>(whole.end() - static_cast<std::ptrdiff_t>(dropped), whole.end()),
            std::vector<float>(dropped));
        for (const std::size_t n : {std::size_t{1}, length / 2, length + 9}) {
            Guarded<float> out(n);
            ASSERT_EQ(invert(out, spectra, 6, win_type, static_cast<int>(n)), SORVO_AUDIO_OK);
            const std::size_t written = std::min(n, length);
            EXPECT_TRUE(out.holds(written)) << n;
            EXPECT_TRUE(same_bits(first(written, out.values()), first(written, whole))) << n;
        }
    }
}

TEST_P(InverseSpectrogram, ReproducesTheSignal) {
    const std::vector<float> x = random_.values(static_cast<std::size_t>(shape_.sample_n));
    const int frame_n = static_cast<int>(frames_of(shape_, center_));
    std::vector<float> spectra(2 * static_cast<std::size_t>(freq_n_ * frame_n));
    ASSERT_EQ(
        sorvoAudioGetSpectrogram(spectra.data(), x.data(), shape_.sample_n, shape_.fft_n,
                                 shape_.hop_n, shape_.win_n, 2, frame_n, center_, 0.0F, norm_),
        SORVO_AUDIO_OK);
    int length = 0;
    ASSERT_EQ(sorvoAudioGetSampleLen(&length, frame_n, freq_n_, shape_.hop_n, center_), 0);
    std::vector<float> y(static_cast<std::size_t>(length));
    ASSERT_EQ(invert(y.data(), spectra, frame_n, 2, length), SORVO_AUDIO_OK);
    // Normalisation by the window is not undone, and only what some window covers comes back.
    const auto factor = static_cast<float>(
        norm_ == SORVO_AUDIO_NORM_WINDOW
            ? reference::norm_factor(0, static_cast<std::size_t>(shape_.win_n), 2, norm_)
            : 1.0L);
    const int margin = center_ == 0 ? std::max(0, (shape_.fft_n - shape_.win_n + 1) / 2) : 0;
    const int end = std::min(length, shape_.sample_n) - margin;
    std::vector<float> actual(y.begin() + margin, y.begin() + end);
    std::vector<float> expected(x.begin() + margin, x.begin() + end);
    for (float& sample : expected) sample *= factor;
    EXPECT_LT(relative_l2(actual, expected), 5e-7);  // measured 3.2e-7
}

INSTANTIATE_TEST_SUITE_P(
    Cases, InverseSpectrogram,
    testing::Combine(testing::Values(Shape{40, 8, 2, 8}, Shape{41, 12, 3, 12},   // plain
                                     Shape{50, 12, 4, 9}, Shape{50, 16, 4, 15},  // odd difference
                                     Shape{33, 14, 3, 6}, Shape{30, 16, 5, 8},   // short windows
                                     Shape{20, 8, 4, 13}, Shape{37, 10, 1, 14},  // long windows
                                     Shape{30, 2, 1, 2}, Shape{2500, 1024, 256, 800}),
                     testing::Values(0, 1, 2), testing::Values(0, 1, 2)),
    name_of);

TEST(InverseSpectrogram, AddsUpFramesInPlaceWithHopZero) {
    const std::vector<float> spectra = {1, 0, 3, 0, 0, 0, 0, 0};  // 2 bins, 2 frames: DC 1 and 3
    Guarded<float> out(4);
    ASSERT_EQ(sorvoAudioGetInverseSpectrogram(out, spectra.data(), 2, 2, 0, 2, 2, 4, 0, 0), 0);
    EXPECT_TRUE(out.holds(2));
    for (std::size_t i = 0; i < 2; ++i) {
        const double w = i == 0 ? 0.08 : 1.0;
        EXPECT_NEAR(out.data()[i], (0.5 + 1.5) * w / (2 * w * w), 1e-5) << i;
    }
}

TEST(InverseSpectrogram, RefusesWhatCannotBe) {
    const std::vector<float> spectra(16, 1.0F);
    Guarded<float> out(4);
    EXPECT_EQ(sorvoAudioGetInverseSpectrogram(out, spectra.data(), 2, 1, 1, 2, 1, 4, 0, 0),
              SORVO_AUDIO_ERROR_ARGUMENT)
        << "a transform of 0 samples";
    for (const int freq_n : {2, INT_MAX}) {
        EXPECT_EQ(sorvoAudioGetInverseSpectrogram(out, spectra.data(), INT_MAX, freq_n, INT_MAX, 2,
                                                  1, 4, 0, 0),
                  SORVO_AUDIO_ERROR_MEMORY);
    }
    EXPECT_TRUE(out.untouched());
}

TEST(SampleLen, IsExactOrAnError) {
    const struct {
        int frame_n, freq_n, hop_n, center, status, expected;
    } cases[] = {
        {6, 5, 3, 0, 0, 23},
        {6, 5, 3, 1, 0, 15},
        {6, 5, 3, 2, 0, 15},
        {1, 1, 0, 0, 0, 0},
        {INT_MAX, 9, 0, 0, 0, 16},
        {65537, 1, 32767, 1, 0, 65536 * 32767},
        {2, 2, INT_MAX - 2, 0, 0, INT_MAX},
        {2, 2, INT_MAX - 1, 0, SORVO_AUDIO_ERROR_INTERNAL, 0},
        {65537, 1, 32768, 1, SORVO_AUDIO_ERROR_INTERNAL, 0},
        {INT_MAX, INT_MAX, INT_MAX, 0, SORVO_AUDIO_ERROR_INTERNAL, 0},
        {1, INT_MAX, 1, 0, SORVO_AUDIO_ERROR_INTERNAL, 0},
    };
    for (const auto& c : cases) {
        Guarded<int> length(1);
        EXPECT_EQ(sorvoAudioGetSampleLen(length, c.frame_n, c.freq_n, c.hop_n, c.center), c.status);
        EXPECT_TRUE(length.holds(c.status == 0 ? 1 : 0)) << c.frame_n << ' ' << c.hop_n;
        if (c.status == 0) {
            EXPECT_EQ(*length.data(), c.expected);
        }
    }
}

}  // namespace
