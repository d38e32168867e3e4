// The transforms of 1 to 5 values, and the equality of all instruction sets.
#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <limits>
#include <vector>

#include "fft_engine/bluestein.h"
#include "fft_engine/cooley_tukey.h"
#include "fft_engine/dft.h"
#include "fft_engine/dft_hard.h"
#include "fft_engine/fft2.h"
#include "fft_engine/primes.h"
#include "reference_dft.h"
#include "simd/level.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::audio::kelpon::fft;
using sorvo_test::Signal;

template <class In>
void expect_blocks(const FFTImpl& implementation, const std::vector<In>& in, unsigned n, int sign,
                   long double scale) {
    Signal out(in.size() + 1, {99.0F, 99.0F});
    implementation.exec(in.data(), out.data());
    for (std::size_t block = 0; block < in.size(); block += n) {
        const std::vector<In> values(in.begin() + static_cast<std::ptrdiff_t>(block),
                                     in.begin() + static_cast<std::ptrdiff_t>(block + n));
        auto exact = sorvo_test::exact_dft(values, sign);
        for (auto& value : exact) value *= scale;
        const Signal actual(out.begin() + static_cast<std::ptrdiff_t>(block),
                            out.begin() + static_cast<std::ptrdiff_t>(block + n));
        EXPECT_LT(sorvo_test::relative_error(actual, exact), 3e-7) << n << ' ' << block;
    }
    EXPECT_EQ(out.back(), std::complex<float>(99.0F, 99.0F)) << n;
}

TEST(HardKernels, TransformEachBlockInEveryFlavour) {
    for (unsigned n = 1; n <= 5; ++n) {
        const Signal complexes = sorvo_test::random_signal(std::size_t{3} * n);
        const std::vector<float> reals = sorvo_test::real_parts(complexes);
        const std::vector<short> shorts = sorvo_test::short_parts(complexes);
        const long double inverse_n = 1.0L / n;
        const auto expect_all = [&](const FFTImpl& implementation, int sign, long double scale) {
            expect_blocks(implementation, complexes, n, sign, scale);
            expect_blocks(implementation, reals, n, sign, scale);
            expect_blocks(implementation, shorts, n, sign, scale);
        };
        expect_all(DFTHARDImpl(n, 3 * n), -1, 1.0L);
        expect_all(IDFTHARDImpl(n, 3 * n, true), +1, inverse_n);
        expect_all(IDFTHARDImpl(n, 3 * n, false), +1, 1.0L);
        expect_all(IDFTImpl(n, 3 * n, true), +1, inverse_n);
        expect_all(IDFTImpl(n, 3 * n, false), +1, 1.0L);
    }
}

TEST(HardKernels, LengthTwoIsSumAndDifference) {
    const float in[] = {0.1F, 0.7F};
    std::complex<float> out[2];
    DFTHARDImpl(2, 2).exec(in, out);
    EXPECT_EQ(out[0], std::complex<float>(in[0] + in[1], 0.0F));
    EXPECT_EQ(out[1], std::complex<float>(in[0] - in[1], 0.0F));
    IDFTHARDImpl(2, 2, true).exec(in, out);
    EXPECT_EQ(out[0], std::complex<float>((in[0] + in[1]) * 0.5F, 0.0F));
    EXPECT_EQ(out[1], std::complex<float>((in[0] - in[1]) * 0.5F, 0.0F));
}

/// Outputs for each input type and for values at the ends of the range, as one array.
Signal outputs(const FFTImpl& implementation, unsigned n) {
    Signal in = sorvo_test::random_signal(n);
    const std::vector<float> reals = sorvo_test::real_parts(in);
    const std::vector<short> shorts = sorvo_test::short_parts(in);
    Signal all(4 * std::size_t{n});
    implementation.exec(shorts.data(), all.data());
    implementation.exec(reals.data(), all.data() + n);
    implementation.exec(in.data(), all.data() + std::size_t{2} * n);
    in[0] = {std::numeric_limits<float>::denorm_min(), -0.0F};
    in[n / 2] = {1e30F, std::numeric_limits<float>::min()};
    implementation.exec(in.data(), all.data() + std::size_t{3} * n);
    return all;
}

template <class Implementation>
void expect_same_bits(unsigned n, SimdLevel level) {
    const Signal expected = outputs(Implementation(n, SimdLevel::sse2), n);
    const Signal actual = outputs(Implementation(n, level), n);
    EXPECT_EQ(std::memcmp(actual.data(), expected.data(), actual.size() * sizeof(actual[0])), 0)
        << n << " level " << static_cast<int>(level);
}

class Levels : public testing::TestWithParam<SimdLevel> {};

TEST_P(Levels, ComputeTheSameBits) {
    const SimdLevel level = GetParam();
    if (level > simd_level()) GTEST_SKIP() << "not supported by this processor";
    std::vector<unsigned> lengths = {400, 441, 480, 1009, 1013 * 2, 97 * 16, 4410, 103 * 107};
    for (unsigned n = 1; n <= 130; ++n) lengths.push_back(n);
    for (unsigned n = 256; n <= 8192; n *= 2) lengths.push_back(n);
    for (const unsigned n : lengths) {
        if (is_power_of_two(n)) {
            expect_same_bits<FFT2Impl>(n, level);
            expect_same_bits<IFFT2Impl>(n, level);
        }
        expect_same_bits<CooleyTukeyFFTImpl>(n, level);
        expect_same_bits<CooleyTukeyIFFTImpl>(n, level);
        expect_same_bits<BluesteinFFTImpl>(n, level);
        expect_same_bits<BluesteinIFFTImpl>(n, level);
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, Levels, testing::Values(SimdLevel::avx2, SimdLevel::avx512));

}  // namespace
