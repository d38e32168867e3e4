#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "mel/mel_conversion.h"
#include "mel/mel_spectrogram.h"
#include "support/compare.h"
#include "support/levels.h"
#include "support/signals.h"

namespace {

using namespace sorvo::audio;

struct Shape {
    int fft_n;
    int hop_n;
    int mel_n;
    float f_max;
};

class MelAt : public sorvo::test::AtLevel {
  protected:
    void expect_plain_result(const std::vector<float>& src, const Shape& shape, int center,
                             float power, int max_frame_n) const {
        const Signal signal = {src.data(), static_cast<int>(src.size())};
        const Analysis analysis = {shape.fft_n, shape.hop_n, shape.fft_n - 3, 1,
                                   center,      power,       center};
        const MelFilterBankParam mel = {
            shape.fft_n / 2 + 1, 0.0F, shape.f_max, shape.mel_n, 16000, center % 2, center == 1};
        const int frame_n = frame_count(signal, analysis, max_frame_n);
        std::vector<float> expected(
            static_cast<std::size_t>(shape.mel_n) * static_cast<std::size_t>(frame_n) + 1,
            -12345.0F);
        std::vector<float> got = expected;
        mel_spectrogram_plain(expected.data(), signal, analysis, mel, max_frame_n);
        mel_spectrogram(got.data(), signal, analysis, mel, max_frame_n, GetParam());
        EXPECT_TRUE(sorvo::test::same_bits(got, expected))
            << "fft_n " << shape.fft_n << " center " << center << " power " << power;
    }
};

TEST_P(MelAt, EqualsOneFrameAtATime) {
    const Shape shapes[] = {{64, 20, 10, 8000.0F},
                            {60, 30, 29, 8000.0F},
                            {100, 130, 12, 20000.0F},
                            {256, 64, 40, 3000.0F},
                            {64, 16, 20, std::numeric_limits<float>::quiet_NaN()}};
    for (const Shape& shape : shapes) {
        for (const sorvo::test::Signal& signal : sorvo::test::awkward_signals(2500)) {
            SCOPED_TRACE(signal.name);
            for (const float power : {0.0F, 1.0F, 2.0F, 7.0F}) {
                const int center = power == 0.0F ? 0 : power == 1.0F ? 1 : 2;
                expect_plain_result(signal.x, shape, center, power, power == 7.0F ? 37 : 1000);
            }
        }
    }
    expect_plain_result(sorvo::test::noise(2500, 1.0F), shapes[0], 1,
                        std::numeric_limits<float>::quiet_NaN(), 1000);
}

TEST_P(MelAt, ConvertsASpectrogramAsOneFrameAtATime) {
    constexpr int freq_n = 33;
    constexpr int mel_n = 12;
    for (const int frame_n : {1, 100, 700}) {
        for (const sorvo::test::Signal& signal :
             sorvo::test::awkward_signals(static_cast<std::size_t>(freq_n * frame_n))) {
            const std::vector<float>& src = signal.x;
            // Bands of any width, one without weights, one with a weight that is not a number.
            std::vector<float> bank = sorvo::test::noise(freq_n * mel_n, 1.0F, 8);
            for (int m = 0; m < mel_n; ++m) {
                std::fill_n(bank.begin() + m * freq_n, std::max(0, 2 * m - 4), -0.0F);
                std::fill_n(bank.begin() + m * freq_n + 2 * m, std::min(m, 6), 0.0F);
            }
            std::fill_n(bank.begin() + freq_n, freq_n, 0.0F);
            bank[freq_n * 5 + 30] = std::numeric_limits<float>::quiet_NaN();
            std::vector<float> expected;
            for (int m = 0; m < mel_n; ++m) {
                for (int t = 0; t < frame_n; ++t) {
                    float sum = 0.0F;
                    for (int k = 0; k < freq_n; ++k) {
                        sum += src[static_cast<std::size_t>(k * frame_n + t)] *
                               bank[static_cast<std::size_t>(m * freq_n + k)];
                    }
                    expected.push_back(sum);
                }
            }
            std::vector<float> dst(expected.size());
            convert_freq_to_mel_2d(dst.data(), src.data(), bank.data(), freq_n, frame_n, mel_n,
                                   GetParam());
            EXPECT_TRUE(sorvo::test::same_bits(dst, expected))
                << signal.name << ", " << frame_n << " frames";
        }
    }
}

SORVO_TEST_AT_ALL_LEVELS(MelAt);

}  // namespace
