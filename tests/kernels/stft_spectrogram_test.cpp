#include "stft/spectrogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kernels/levels.h"
#include "kernels/stft_signals.h"
#include "stft/framing.h"

namespace {

using namespace sorvo::audio;

struct Shape {
    int sample_n;
    int fft_n;
    int hop_n;
    int win_n;
};

constexpr float untouched = -12345.0F;

/// The spectrogram by these kernels, or one frame at a time; two frames fewer than there are, or up
/// to three more columns than frames.
std::vector<float> compute(const std::vector<float>& src, const Shape& shape, int center,
                           float power, int norm_type, int extra, const FrameKernels* kernels) {
    const int sample_n = static_cast<int>(src.size());
    const int all = get_frame_len(sample_n, shape.fft_n, shape.hop_n, center);
    const int max_frame_n = std::max(all + extra, 1);
    const FrameSource source = {src.data(),  sample_n, shape.fft_n,
                                shape.hop_n, center,   std::min(all, max_frame_n)};
    std::vector<float> dst(
        2 * static_cast<std::size_t>(shape.fft_n / 2 + 1) * static_cast<std::size_t>(max_frame_n),
        untouched);
    spectrogram(dst.data(), source, shape.win_n, 1 + extra % 2, max_frame_n, power, norm_type,
                kernels);
    return dst;
}

void expect_equal(const std::vector<float>& src, const Shape& shape, int center, float power,
                  int norm_type, int extra) {
    const std::vector<float> expected =
        compute(src, shape, center, power, norm_type, extra, nullptr);
    test::for_each_level([&](SimdLevel level) {
        const std::vector<float> got =
            compute(src, shape, center, power, norm_type, extra, &frame_kernels(level));
        EXPECT_EQ(test::first_difference(got, expected), test::none)
            << "fft_n " << shape.fft_n << " hop " << shape.hop_n << " window " << shape.win_n
            << " center " << center << " power " << power << " norm " << norm_type;
    });
}

TEST(SpectrogramKernels, EqualOneFrameAtATimeForEveryKindOfSignal) {
    for (const int fft_n : {16, 32, 64, 128, 15, 60, 97}) {
        const Shape shape = {900, fft_n, fft_n / 3, fft_n - 5};
        for (const test::NamedSignal& signal : test::telling_signals(900)) {
            SCOPED_TRACE(signal.name);
            for (const float power : {0.0F, 1.0F, 2.0F, 3.0F}) {
                for (const int center : {0, 1, 2}) {
                    expect_equal(signal.samples, shape, center, power, center, 0);
                }
            }
        }
    }
}

TEST(SpectrogramKernels, EqualOneFrameAtATimeForEveryLength) {
    for (int fft_n = 3; fft_n <= 200; ++fft_n) {
        if (fft_n == 4 || fft_n == 8) {
            continue;
        }
        const std::vector<float> src = test::noise(700, 1.0F, static_cast<unsigned>(fft_n));
        const Shape shape = {700, fft_n, 1 + fft_n / 2, fft_n};
        expect_equal(src, shape, fft_n % 3, 0.0F, fft_n % 3, fft_n % 6 - 2);
        expect_equal(src, shape, 1, 1.0F, 0, 1);
    }
}

TEST(SpectrogramKernels, EqualOneFrameAtATimeForOddShapes) {
    const Shape shapes[] = {
        {3000, 256, 1, 256},     {3000, 256, 2, 100},     {3000, 256, 3, 255},
        {3000, 400, 160, 400},   {3000, 512, 7, 300},     {3000, 256, 300, 256},
        {9000, 250, 999, 251},   {2100, 1024, 256, 1024}, {4500, 2048, 512, 1},
        {4200, 4096, 100, 4096}, {3000, 480, 160, 600},   {1300, 1200, 300, 1200},
        {3000, 441, 100, 441},   {3000, 121, 40, 121},    {1000, 338, 100, 338},
        {1000, 17, 64, 17},      {6000, 2187, 400, 2187}, {2500, 1021, 300, 900},
        {4000, 3969, 2, 4000}};
    for (const Shape& shape : shapes) {
        const std::vector<float> src = test::noise(static_cast<std::size_t>(shape.sample_n), 0.5F);
        for (const int center : {0, 1, 2}) {
            expect_equal(src, shape, center, 0.0F, 1, 3);
            expect_equal(src, shape, center, 2.0F, 2, -2);
        }
    }
}

}  // namespace
