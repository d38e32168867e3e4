#include "mel/mel_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/random.h"
#include "support/reference.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

struct MelCase {
    int sample_n, fft_n, hop_n, win_n, win_type, center;
    float power;
    int fft_norm, mel_n, mel_norm, formula;
};

const MelCase cases[] = {
    {400, 64, 16, 64, 1, 1, 2.0F, 0, 20, 1, 0}, {400, 60, 25, 50, 2, 0, 1.0F, 1, 30, 0, 1},
    {333, 45, 10, 45, 1, 2, 2.0F, 2, 22, 1, 1}, {333, 64, 30, 80, 2, 1, 0.0F, 0, 32, 0, 0},
    {128, 2, 1, 2, 2, 2, 0.5F, 0, 1, 0, 0},     {700, 512, 100, 400, 1, 1, 1.0F, 2, 80, 1, 0},
};

struct Outputs {
    std::size_t frame_n;
    std::vector<float> mel;    // of one call
    std::vector<float> steps;  // of spectrogram, bank and conversion
    std::vector<float> spectrum;
    std::vector<float> bank;
};

Outputs compute(const MelCase& c, const std::vector<float>& x, int max_frame_n) {
    int frame_n = 0;
    EXPECT_EQ(sorvoAudioGetFrameLen(&frame_n, c.sample_n, c.fft_n, c.hop_n, c.center), 0);
    frame_n = std::min(frame_n, max_frame_n);
    const int freq_n = c.fft_n / 2 + 1;
    const auto frames = static_cast<std::size_t>(frame_n);
    const auto bands = static_cast<std::size_t>(c.mel_n);
    const std::size_t bins = static_cast<std::size_t>(freq_n) * frames;
    Guarded<float> mel(bands * static_cast<std::size_t>(max_frame_n));
    EXPECT_EQ(
        sorvoAudioGetMelSpectrogram(mel, x.data(), c.sample_n, 8000, c.fft_n, c.hop_n, c.win_n,
                                    c.win_type, max_frame_n, c.center, c.power, c.fft_norm, 50.0F,
                                    3900.0F, c.mel_n, c.mel_norm, c.formula),
        SORVO_AUDIO_OK);
    EXPECT_TRUE(mel.holds(bands * frames));

    std::vector<float> complex(2 * bins);
    std::vector<float> spectrum(bins);
    std::vector<float> bank(bands * static_cast<std::size_t>(freq_n));
    std::vector<float> steps(bands * frames);
    EXPECT_EQ(sorvoAudioGetSpectrogram(complex.data(), x.data(), c.sample_n, c.fft_n, c.hop_n,
                                       c.win_n, c.win_type, frame_n, c.center, c.power, c.fft_norm),
              0);
    for (std::size_t i = 0; i < bins; ++i) spectrum[i] = c.power > 0.0F ? complex[2 * i] : 1.0F;
    EXPECT_EQ(sorvoAudioGetFBMatrix(bank.data(), freq_n, 50.0F, 3900.0F, c.mel_n, 8000, c.mel_norm,
                                    c.formula),
              0);
    EXPECT_EQ(sorvoAudioConvertToMel(steps.data(), spectrum.data(), bank.data(), freq_n, frame_n,
                                     c.mel_n),
              0);
    std::vector<float> values = mel.values();
    values.resize(bands * frames);
    return {frames, values, steps, spectrum, bank};
}

class MelSpectrogram : public testing::TestWithParam<MelCase> {};

TEST_P(MelSpectrogram, IsTheConvertedSpectrogramToTheBit) {
    const MelCase& c = GetParam();
    Random random(static_cast<unsigned>(c.fft_n));
    const std::vector<float> x = random.values(static_cast<std::size_t>(c.sample_n));
    for (const int max_frame_n : {1, 3, 1000}) {
        const Outputs out = compute(c, x, max_frame_n);
        EXPECT_TRUE(same_bits(out.mel, out.steps)) << max_frame_n;
        reference::Reals expected(out.mel.size());
        const std::size_t freq_n = out.bank.size() / static_cast<std::size_t>(c.mel_n);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            for (std::size_t k = 0; k < freq_n; ++k) {
                expected[i] += static_cast<long double>(out.bank[i / out.frame_n * freq_n + k]) *
                               out.spectrum[k * out.frame_n + i % out.frame_n];
            }
        }
        EXPECT_LT(relative_l2(out.mel, expected), 1e-7) << max_frame_n;  // measured 4.9e-8
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, MelSpectrogram, testing::ValuesIn(cases), [](const auto& mel) {
    return "fft" + std::to_string(mel.param.fft_n) + "_win" + std::to_string(mel.param.win_n) +
           "_bands" + std::to_string(mel.param.mel_n) + "_center" +
           std::to_string(mel.param.center);
});

TEST(MelSpectrogram, OfNoFrameWritesNothing) {
    const std::vector<float> x(40, 1.0F);
    for (const int center : {0, 1, 2}) {
        for (const int hop_n : {0, 4}) {
            Guarded<float> out(64);
            EXPECT_EQ(
                sorvoAudioGetMelSpectrogram(out, x.data(), hop_n == 0 ? 40 : 15, 8000, 16, hop_n,
                                            16, 1, 8, center, 2.0F, 0, 0.0F, 4000.0F, 8, 1, 0),
                SORVO_AUDIO_OK);
            EXPECT_TRUE(out.untouched()) << center << ' ' << hop_n;
        }
    }
}

// Both forms add in the order of the bins. With these numbers any other order gives another sum.
TEST(MelConversion, AddsInTheOrderOfTheBins) {
    constexpr std::size_t frame_n = 131;
    const std::vector<float> column = {1e8F, 1.0F, -1e8F, 1.0F};
    const std::vector<std::vector<float>> fb = {{1, 1, 1, 1}, {}};
    std::vector<float> one(2, -1.0F);
    convert_freq_to_mel_1d(one, column, fb, 2);
    EXPECT_EQ(one, (std::vector<float>{1.0F, 0.0F}));
    std::vector<float> src;
    for (const float x : column) src.insert(src.end(), frame_n, x);
    const std::vector<float> weights(8, 1.0F);
    std::vector<float> out(2 * frame_n);
    convert_freq_to_mel_2d(out.data(), src.data(), weights.data(), 4, frame_n, 2);
    EXPECT_EQ(out, std::vector<float>(2 * frame_n, 1.0F));
    convert_freq_to_mel_2d(out.data(), src.data(), weights.data(), 0, frame_n, 2);
    EXPECT_EQ(out, std::vector<float>(2 * frame_n));
}

}  // namespace
