#include "fft/single_fft.h"

#include <gtest/gtest.h>

#include <vector>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "kernels/levels.h"
#include "kernels/stft_signals.h"

namespace {

using namespace sorvo::audio;

void expect_equal(const std::vector<float>& src, int n) {
    const std::size_t size = 2 * static_cast<std::size_t>(n);
    std::vector<float> forward(size);
    fft_pre_process(forward, src.data(), n);
    fft(forward, n, FftTable::instance().ref_table(n));
    std::vector<float> inverse(src.begin(), src.begin() + static_cast<std::ptrdiff_t>(size));
    ifft(inverse, n, FftTable::instance().ref_inv_table(n));
    test::for_each_level([&](CpuLevel level) {
        std::vector<float> dst(size);
        real_fft(dst.data(), src.data(), n, single_kernels(level));
        EXPECT_EQ(test::first_difference(dst, forward), test::none) << "forward, n " << n;
        complex_ifft(dst.data(), src.data(), n, single_kernels(level));
        EXPECT_EQ(test::first_difference(dst, inverse), test::none) << "inverse, n " << n;
        dst = src;  // the caller's array is both
        complex_ifft(dst.data(), dst.data(), n, single_kernels(level));
        dst.resize(size);
        EXPECT_EQ(test::first_difference(dst, inverse), test::none) << "in place, n " << n;
    });
}

TEST(SingleKernels, EqualThePlainTransformForEveryKindOfSignal) {
    for (const int n : {256, 512, 1024, 2048, 4096, 8192, 400, 240, 441, 97, 17}) {
        for (const test::NamedSignal& signal :
             test::telling_signals(2 * static_cast<std::size_t>(n))) {
            SCOPED_TRACE(signal.name);
            expect_equal(signal.samples, n);
        }
    }
}

TEST(SingleKernels, EqualThePlainTransformForEveryLength) {
    for (int n = 1; n <= 700; ++n) {
        expect_equal(test::noise(2 * static_cast<std::size_t>(n), 1.0F), n);
    }
}

}  // namespace
