// Every level makes the bits of the lowest.
#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <limits>
#include <vector>

#include "fft_engine/bluestein.h"
#include "fft_engine/cooley_tukey.h"
#include "fft_engine/fft2.h"
#include "fft_engine/primes.h"
#include "reference_dft.h"
#include "support/levels.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::audio::kelpon::fft;
using sorvo_test::Signal;

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

class EngineLevels : public sorvo::test::AtLevel {
  protected:
    template <class Implementation>
    static void expect_same_bits(unsigned n) {
        const Signal expected = outputs(Implementation(n, all_simd_levels().front()), n);
        const Signal actual = outputs(Implementation(n, GetParam()), n);
        EXPECT_EQ(std::memcmp(actual.data(), expected.data(), actual.size() * sizeof(actual[0])), 0)
            << n;
    }
};

TEST_P(EngineLevels, ComputeTheSameBits) {
    std::vector<unsigned> lengths = {400, 441, 480, 1009, 1013 * 2, 97 * 16, 4410, 103 * 107};
    for (unsigned n = 1; n <= 130; ++n) lengths.push_back(n);
    for (unsigned n = 256; n <= 8192; n *= 2) lengths.push_back(n);
    for (const unsigned n : lengths) {
        if (is_power_of_two(n)) {
            expect_same_bits<FFT2Impl>(n);
            expect_same_bits<IFFT2Impl>(n);
        }
        expect_same_bits<CooleyTukeyFFTImpl>(n);
        expect_same_bits<CooleyTukeyIFFTImpl>(n);
        expect_same_bits<BluesteinFFTImpl>(n);
        expect_same_bits<BluesteinIFFTImpl>(n);
    }
}

SORVO_TEST_AT_ALL_LEVELS(EngineLevels);

}  // namespace
