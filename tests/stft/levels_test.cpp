#include "stft/spectrogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "stft/inverse_spectrogram.h"
#include "support/compare.h"
#include "support/levels.h"
#include "support/signals.h"

namespace {

using namespace sorvo::audio;

struct Shape {
    int sample_n;
    int fft_n;
    int hop_n;
    int win_n;
};

constexpr float untouched = -12345.0F;

class SpectrogramAt : public sorvo::test::AtLevel {
  protected:
    /// Two frames fewer than there are, or up to three more columns than frames.
    void expect_plain_result(const std::vector<float>& src, const Shape& shape, int center,
                             float power, int norm_type, int extra) const {
        const Signal signal = {src.data(), static_cast<int>(src.size())};
        const Analysis analysis = {shape.fft_n, shape.hop_n, shape.win_n, 1 + extra % 2,
                                   center,      power,       norm_type};
        const int max_frame_n =
            std::max(frame_count(signal, analysis, std::numeric_limits<int>::max()) + extra, 1);
        std::vector<float> expected(2 * static_cast<std::size_t>(shape.fft_n / 2 + 1) *
                                        static_cast<std::size_t>(max_frame_n),
                                    untouched);
        std::vector<float> got = expected;
        spectrogram_plain(expected.data(), signal, analysis, max_frame_n);
        spectrogram(got.data(), signal, analysis, max_frame_n, GetParam());
        EXPECT_TRUE(sorvo::test::same_bits(got, expected))
            << "fft_n " << shape.fft_n << " hop " << shape.hop_n << " window " << shape.win_n
            << " center " << center << " power " << power << " norm " << norm_type;
    }
};

TEST_P(SpectrogramAt, EqualsOneFrameAtATimeForEveryKindOfSignal) {
    for (const int fft_n : {16, 32, 64, 128, 15, 60, 97}) {
        const Shape shape = {900, fft_n, fft_n / 3, fft_n - 5};
        for (const sorvo::test::Signal& signal : sorvo::test::awkward_signals(900)) {
            SCOPED_TRACE(signal.name);
            for (const float power : {0.0F, 1.0F, 2.0F, 3.0F}) {
                for (const int center : {0, 1, 2}) {
                    expect_plain_result(signal.x, shape, center, power, center, 0);
                }
            }
        }
    }
}

TEST_P(SpectrogramAt, EqualsOneFrameAtATimeForEveryLength) {
    for (int fft_n = 3; fft_n <= 200; ++fft_n) {
        if (fft_n == 4 || fft_n == 8) {
            continue;
        }
        const std::vector<float> src = sorvo::test::noise(700, 1.0F, static_cast<unsigned>(fft_n));
        const Shape shape = {700, fft_n, 1 + fft_n / 2, fft_n};
        expect_plain_result(src, shape, fft_n % 3, 0.0F, fft_n % 3, fft_n % 6 - 2);
        expect_plain_result(src, shape, 1, 1.0F, 0, 1);
    }
}

TEST_P(SpectrogramAt, EqualsOneFrameAtATimeForOddShapes) {
    const Shape shapes[] = {
        {3000, 256, 1, 256},     {3000, 256, 2, 100},     {3000, 256, 3, 255},
        {3000, 400, 160, 400},   {3000, 512, 7, 300},     {3000, 256, 300, 256},
        {9000, 250, 999, 251},   {2100, 1024, 256, 1024}, {4500, 2048, 512, 1},
        {4200, 4096, 100, 4096}, {3000, 480, 160, 600},   {1300, 1200, 300, 1200},
        {3000, 441, 100, 441},   {3000, 121, 40, 121},    {1000, 338, 100, 338},
        {1000, 17, 64, 17},      {6000, 2187, 400, 2187}, {2500, 1021, 300, 900},
        {4000, 3969, 2, 4000}};
    for (const Shape& shape : shapes) {
        const std::vector<float> src =
            sorvo::test::noise(static_cast<std::size_t>(shape.sample_n), 0.5F);
        for (const int center : {0, 1, 2}) {
            expect_plain_result(src, shape, center, 0.0F, 1, 3);
            expect_plain_result(src, shape, center, 2.0F, 2, -2);
        }
    }
}

SORVO_TEST_AT_ALL_LEVELS(SpectrogramAt);

struct InverseShape {
    int frame_n;
    int freq_n;
    int hop_n;
    int win_n;
};

class InverseAt : public sorvo::test::AtLevel {
  protected:
    void expect_plain_result(const std::vector<float>& src, const InverseShape& shape, int center,
                             int norm_type, int extra) const {
        const int length = (shape.frame_n - 1) * shape.hop_n + 2 * shape.freq_n - 2;
        const int wanted = std::max(length - (center != 0 ? shape.freq_n - 1 : 0) + extra, 1);
        const Synthesis synthesis = {src.data(),  shape.frame_n,  shape.freq_n, shape.hop_n,
                                     shape.win_n, 1 + center % 2, center,       norm_type};
        std::vector<float> expected(static_cast<std::size_t>(wanted) + 5, untouched);
        std::vector<float> got = expected;
        inverse_spectrogram_plain(expected.data(), wanted, synthesis);
        inverse_spectrogram(got.data(), wanted, synthesis, GetParam());
        EXPECT_TRUE(sorvo::test::same_bits(got, expected))
            << "frames " << shape.frame_n << " freq_n " << shape.freq_n << " hop " << shape.hop_n
            << " window " << shape.win_n << " center " << center << " norm " << norm_type;
    }
};

std::size_t size_of(const InverseShape& shape) {
    return 2 * static_cast<std::size_t>(shape.frame_n) * static_cast<std::size_t>(shape.freq_n);
}

TEST_P(InverseAt, EqualsOneFrameAtATimeForEveryKindOfSpectrum) {
    for (const int freq_n : {9, 17, 33, 4, 6, 48}) {
        const InverseShape shape = {70, freq_n, std::max(freq_n / 2, 1), 2 * freq_n - 3};
        for (const sorvo::test::Signal& spectrum : sorvo::test::awkward_signals(size_of(shape))) {
            SCOPED_TRACE(spectrum.name);
            for (const int norm_type : {0, 1, 2}) {
                expect_plain_result(spectrum.x, shape, norm_type, norm_type, 0);
            }
        }
    }
}

TEST_P(InverseAt, EqualsOneFrameAtATimeForEveryLength) {
    for (int freq_n = 4; freq_n <= 110; ++freq_n) {
        if (freq_n == 5) {
            continue;  // 8 points
        }
        const InverseShape shape = {19 + freq_n % 40, freq_n, 1 + freq_n / 3,
                                    2 * freq_n - 2 - freq_n % 3};
        const std::vector<float> src = sorvo::test::noise(size_of(shape), 1.0F);
        expect_plain_result(src, shape, freq_n % 2, freq_n % 3, freq_n % 7 - 3);
    }
}

TEST_P(InverseAt, EqualsOneFrameAtATimeForOddShapes) {
    const InverseShape shapes[] = {
        {2, 129, 64, 256},     {150, 201, 160, 400},  {200, 129, 1, 256},    {130, 129, 2, 256},
        {90, 129, 3, 200},     {65, 33, 64, 64},      {64, 33, 65, 64},      {63, 33, 1000, 70},
        {100, 513, 256, 1024}, {60, 1025, 512, 2048}, {40, 2049, 700, 4096}, {33, 2001, 999, 100},
        {50, 254, 77, 506},    {40, 122, 50, 242},    {30, 170, 169, 1}};
    for (const InverseShape& shape : shapes) {
        const std::vector<float> src = sorvo::test::noise(size_of(shape), 0.5F);
        const int half = shape.hop_n * (shape.frame_n / 2);
        for (const int extra : {-half, -shape.hop_n - 3, 0, 40}) {
            expect_plain_result(src, shape, extra == 0 ? 0 : 1, 2, extra);
        }
    }
}

SORVO_TEST_AT_ALL_LEVELS(InverseAt);

}  // namespace
