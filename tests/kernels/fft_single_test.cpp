#include "fft/single_fft.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "kernels/levels.h"
#include "kernels/stft_signals.h"

namespace {

using namespace sorvo::audio;

/// `complex` holds n complex elements, of whose floats the first n are the real ones. All vectors
/// have just the size that the transforms may touch.
void expect_equal(const std::vector<float>& complex, int n) {
    const auto size = static_cast<std::size_t>(n);
    const std::vector<float> real(complex.begin(), complex.begin() + n);
    std::vector<float> forward(2 * size);
    fft_pre_process(forward, real.data(), n);
    fft(forward, n, FftTable::instance().ref_table(n));
    std::vector<float> inverse = complex;
    ifft(inverse, n, FftTable::instance().ref_inv_table(n));
    test::for_each_level([&](SimdLevel level) {
        const SingleKernels& kernels = single_kernels(level);
        std::vector<float> dst(2 * size);
        real_fft(dst.data(), real.data(), n, kernels);
        EXPECT_EQ(test::first_difference(dst, forward), test::none) << "forward, n " << n;
        complex_ifft(dst.data(), complex.data(), n, kernels);
        EXPECT_EQ(test::first_difference(dst, inverse), test::none) << "inverse, n " << n;
        // The caller's array is both, or holds the real elements in its second half.
        dst = complex;
        complex_ifft(dst.data(), dst.data(), n, kernels);
        EXPECT_EQ(test::first_difference(dst, inverse), test::none) << "inverse in place, n " << n;
        std::copy(real.begin(), real.end(), dst.begin() + n);
        real_fft(dst.data(), dst.data() + n, n, kernels);
        EXPECT_EQ(test::first_difference(dst, forward), test::none) << "forward in place, n " << n;
    });
}

void expect_equal_for_noise(int n) {
    expect_equal(test::noise(2 * static_cast<std::size_t>(n), 1.0F), n);
}

TEST(SingleKernels, EqualThePlainTransformForEveryKindOfSignal) {
    // Powers of two; composite lengths with and without factors that have code of their own;
    // primes; many residues, few, and one.
    for (const int n : {64, 128, 256, 512, 4096, 400, 480, 240, 441, 63, 1001, 202, 961, 97, 17}) {
        for (const test::NamedSignal& signal :
             test::telling_signals(2 * static_cast<std::size_t>(n))) {
            SCOPED_TRACE(signal.name);
            expect_equal(signal.samples, n);
        }
    }
}

TEST(SingleKernels, EqualThePlainTransformForEveryLength) {
    for (int n = 1; n <= 700; ++n) {
        expect_equal_for_noise(n);
    }
    for (int n = 701; n <= max_planned_n; n += 61) {
        expect_equal_for_noise(n);
    }
}

TEST(SingleKernels, EqualThePlainTransformForLongOnes) {
    // Up to the longest with a plan and beyond it, in powers of two and otherwise; twiddles in
    // reach and (211 * 211) out of it.
    for (const int n : {8192, 65536, 131072, 8000, 10007, 44100, 211 * 211, 72000}) {
        expect_equal_for_noise(n);
    }
}

}  // namespace
