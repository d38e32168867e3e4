#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numeric>

#include "fft_engine/cooley_tukey_factors.h"
#include "fft_engine/primes.h"
#include "fft_engine/twiddles.h"
#include "reference_dft.h"

namespace {

using namespace sorvo::audio::kelpon::fft;

bool same_bits(std::complex<float> a, std::complex<float> b) {
    return a == b && std::signbit(a.real()) == std::signbit(b.real()) &&
           std::signbit(a.imag()) == std::signbit(b.imag());
}

TEST(Twiddles, AreExactOnTheAxes) {
    for (const unsigned n : {4U, 8U, 12U, 100U, 4096U}) {
        const auto forward = calcW(n);
        EXPECT_TRUE(same_bits(forward[0], {1.0F, 0.0F}));
        EXPECT_TRUE(same_bits(forward[n / 4], {0.0F, -1.0F}));
        EXPECT_TRUE(same_bits(forward[n / 2], {-1.0F, 0.0F}));
        EXPECT_TRUE(same_bits(forward[3 * n / 4], {0.0F, 1.0F}));
        const auto inverse = calcW(n, Direction::inverse);
        EXPECT_TRUE(same_bits(inverse[0], {1.0F, -0.0F}));
        EXPECT_TRUE(same_bits(inverse[n / 4], {0.0F, 1.0F}));
        EXPECT_TRUE(same_bits(inverse[n / 2], {-1.0F, -0.0F}));
        EXPECT_TRUE(same_bits(inverse[3 * n / 4], {0.0F, -1.0F}));
    }
}

TEST(Twiddles, FollowTheSeriesToItsAccuracy) {
    double worst = 0.0;
    for (const unsigned n : {3U, 7U, 97U, 360U, 1009U, 4096U, 44100U}) {
        for (const Direction direction : {Direction::forward, Direction::inverse}) {
            const auto full = calcW(n, direction);
            const auto exact = sorvo_test::exact_roots(n, direction == Direction::forward ? -1 : 1);
            for (unsigned k = 0; k < n; ++k) {
                const auto error = std::abs(sorvo_test::Exact(full[k]) - exact[k]);
                worst = std::max(worst, static_cast<double>(error));
            }
            const auto half = calcW(n, direction, TableLength::half);
            ASSERT_EQ(half.size(), n / 2);
            EXPECT_TRUE(std::equal(half.begin(), half.end(), full.begin()));
        }
    }
    EXPECT_LT(worst, 8e-7);  // measured: 7.5e-7
    EXPECT_GT(worst, 1e-7) << "the angles are formed in float: a better table is another table";
}

TEST(Twiddles, ChirpKeepsItsAccuracyAtEveryLength) {
    for (const unsigned n : {1U, 2U, 5U, 13U, 61U, 97U, 1009U, 4093U, 70001U}) {
        const auto chirp = calc_chirp(n);
        const auto roots = sorvo_test::exact_roots(2 * std::size_t{n}, -1);
        for (std::uint64_t k = 0; k < n; ++k) {
            const auto exact = roots[k * k % (2 * std::uint64_t{n})];
            ASSERT_LT(std::abs(sorvo_test::Exact(chirp[k]) - exact), 6.5e-7L) << n << ' ' << k;
        }
    }
}

TEST(Primes, SieveAndFactorsAgreeWithTrialDivision) {
    const auto sieve = sieve_primes(2000);
    for (unsigned n = 1; n <= 2000; ++n) {
        bool prime = n > 1;
        for (unsigned divisor = 2; divisor < n; ++divisor) prime = prime && n % divisor != 0;
        EXPECT_EQ(sieve[n], prime) << n;
        unsigned product = 1;
        for (const unsigned factor : prime_factors(n)) {
            EXPECT_TRUE(sieve[factor]) << n;
            product *= factor;
        }
        EXPECT_EQ(product, n);
    }
    EXPECT_EQ(prime_factors(4294967291U), std::vector<unsigned>{4294967291U});
}

// The transform by the factor list, written as the recursion that it stands for.
sorvo_test::Signal merge(const sorvo_test::Signal& in, const std::vector<unsigned>& index,
                         const std::vector<CooleyTukeyFactor>& factors) {
    sorvo_test::Signal values;
    for (const unsigned i : index) values.push_back(in[i]);
    for (const CooleyTukeyFactor& factor : factors) {
        const unsigned length = factor.radix * factor.span;
        const auto w = calcW(length);
        sorvo_test::Signal merged(values.size());
        for (unsigned block = 0; block < values.size(); block += length) {
            for (unsigned k = 0; k < length; ++k) {
                for (unsigned a = 0; a < factor.radix; ++a) {
                    merged[block + k] += values[block + a * factor.span + k % factor.span] *
                                         w[std::size_t{a} * k % length];
                }
            }
        }
        values = merged;
    }
    return values;
}

TEST(CooleyTukeyIndex, PutsTheInputWhereTheStagesExpectIt) {
    for (const unsigned n : {1U, 6U, 36U, 210U, 256U, 404U, 480U}) {
        const CooleyTukeyFactors factors = choose_factors(n);
        ASSERT_EQ(factors.column_n * factors.row_n, n);
        auto stages = factors.columns;
        for (const auto& stage : factors.rows) {
            stages.push_back({stage.radix, stage.span * factors.column_n});
        }
        const auto in = sorvo_test::random_signal(n);
        const auto out = merge(in, CooleyTukeyIndex(stages), stages);
        EXPECT_LT(sorvo_test::relative_error(out, sorvo_test::exact_dft(in, -1)), 1e-6) << n;
    }
}

}  // namespace
