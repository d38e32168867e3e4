#include "stft/inverse_spectrogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kernels/levels.h"
#include "kernels/stft_signals.h"

namespace {

using namespace sorvo::audio;

struct Shape {
    int frame_n;
    int freq_n;
    int hop_n;
    int win_n;
};

void expect_equal(const std::vector<float>& src, const Shape& shape, int center, int norm_type,
                  int extra) {
    const int length = (shape.frame_n - 1) * shape.hop_n + 2 * shape.freq_n - 2;
    const int wanted = std::max(length - (center != 0 ? shape.freq_n - 1 : 0) + extra, 1);
    const SynthesisSource source = {src.data(),  shape.frame_n, shape.freq_n,
                                    shape.hop_n, wanted,        center};
    const auto compute = [&](const OverlapKernels* kernels) {
        std::vector<float> dst(static_cast<std::size_t>(wanted) + 5, -12345.0F);
        inverse_spectrogram(dst.data(), source, shape.win_n, 1 + center % 2, norm_type, kernels);
        return dst;
    };
    const std::vector<float> expected = compute(nullptr);
    test::for_each_level([&](SimdLevel level) {
        EXPECT_EQ(test::first_difference(compute(&overlap_kernels(level)), expected), test::none)
            << "frames " << shape.frame_n << " freq_n " << shape.freq_n << " hop " << shape.hop_n
            << " window " << shape.win_n << " center " << center << " norm " << norm_type;
    });
}

std::size_t size_of(const Shape& shape) {
    return 2 * static_cast<std::size_t>(shape.frame_n) * static_cast<std::size_t>(shape.freq_n);
}

TEST(OverlapKernels, EqualOneFrameAtATimeForEveryKindOfSpectrum) {
    for (const int freq_n : {9, 17, 33, 4, 6, 48}) {
        const Shape shape = {70, freq_n, std::max(freq_n / 2, 1), 2 * freq_n - 3};
        for (const test::NamedSignal& spectrum : test::telling_signals(size_of(shape))) {
            SCOPED_TRACE(spectrum.name);
            for (const int norm_type : {0, 1, 2}) {
                expect_equal(spectrum.samples, shape, norm_type, norm_type, 0);
            }
        }
    }
}

TEST(OverlapKernels, EqualOneFrameAtATimeForEveryLength) {
    for (int freq_n = 4; freq_n <= 110; ++freq_n) {
        if (freq_n == 5) {
            continue;  // 8 points
        }
        const Shape shape = {19 + freq_n % 40, freq_n, 1 + freq_n / 3, 2 * freq_n - 2 - freq_n % 3};
        const std::vector<float> src = test::noise(size_of(shape), 1.0F);
        expect_equal(src, shape, freq_n % 2, freq_n % 3, freq_n % 7 - 3);
    }
}

TEST(OverlapKernels, EqualOneFrameAtATimeForOddShapes) {
    const Shape shapes[] = {{2, 129, 64, 256},     {150, 201, 160, 400},  {200, 129, 1, 256},
                            {130, 129, 2, 256},    {90, 129, 3, 200},     {65, 33, 64, 64},
                            {64, 33, 65, 64},      {63, 33, 1000, 70},    {100, 513, 256, 1024},
                            {60, 1025, 512, 2048}, {40, 2049, 700, 4096}, {33, 2001, 999, 100},
                            {50, 254, 77, 506},    {40, 122, 50, 242},    {30, 170, 169, 1}};
    for (const Shape& shape : shapes) {
        const std::vector<float> src = test::noise(size_of(shape), 0.5F);
        const int half = shape.hop_n * (shape.frame_n / 2);
        for (const int extra : {-half, -shape.hop_n - 3, 0, 40}) {
            expect_equal(src, shape, extra == 0 ? 0 : 1, 2, extra);
        }
    }
}

}  // namespace
