#include "math/complex_norm.h"
#include "elementwise/magphase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <vector>

#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/random.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

/// Complex values of every size from denormal to huge, zeros of both signs, and random ones.
std::vector<float> complex_samples() {
    std::vector<float> x = {0.0F,  0.0F,  -0.0F, 0.0F, 0.0F,   -0.0F,  -0.0F, -0.0F,  -1.0F, 0.0F,
                            -1.0F, -0.0F, 3.0F,  4.0F, 1e-20F, 2e-20F, 1e18F, -1e18F, 1.0F,  -1.0F};
    Random random(5);
    for (const float scale : {1e-6F, 1.0F, 1e6F}) {
        for (int i = 0; i < 200; ++i) x.push_back(random.value() * scale);
    }
    return x;
}

// The squared modulus is rounded to float; the power magnifies that by power / 2. Measured: 1.8 ulp
// for power 3.
TEST(ComplexNorm, IsTheModulusToAPower) {
    const std::vector<float> x = complex_samples();
    const int n = static_cast<int>(x.size() / 2);
    for (const float power : {0.5F, 1.0F, 2.0F, 3.0F}) {
        std::vector<float> norm(x.size() / 2);
        ASSERT_EQ(sorvoAudioComplexNorm(norm.data(), x.data(), n, power), SORVO_AUDIO_OK);
        for (std::size_t i = 0; i < norm.size(); ++i) {
            const std::complex<long double> z(x[2 * i], x[2 * i + 1]);
            const long double expected = std::pow(std::abs(z), power);
            if (std::abs(z) < 1e-18L || expected > 1e38L)
                continue;  // the square leaves float's range
            EXPECT_LT(ulp_error(norm[i], expected), 1.0 + 0.5 * double{power})
                << z << " to the power " << power;
        }
        std::vector<float> other(norm.size());
        std::vector<float> source = x;
        complex_norm_1d(other, source, power);
        EXPECT_TRUE(same_bits(other, norm));
        complex_norm_1d(source, power);
        for (std::size_t i = 0; i < norm.size(); ++i) {
            EXPECT_EQ(bits_of(source[2 * i]), bits_of(norm[i]));
            EXPECT_EQ(bits_of(source[2 * i + 1]), 0U);
        }
        std::vector<float> in_place = x;
        ASSERT_EQ(sorvoAudioComplexNorm(in_place.data(), in_place.data(), n, power), 0);
        in_place.resize(norm.size());
        EXPECT_TRUE(same_bits(in_place, norm));
    }
}

TEST(ComplexNorm, FollowsThePowerFunctionOutsideOrdinaryNumbers) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> x = {0, 0, 1e30F, 0, -infinity, 1, nan, 0, infinity, nan, 1e-30F, 0};
    std::vector<float> norm(6);
    ASSERT_EQ(sorvoAudioComplexNorm(norm.data(), x.data(), 6, 1.0F), 0);
    EXPECT_TRUE(same_bits(norm, std::vector<float>{0, infinity, infinity, nan, nan, 0}));
    ASSERT_EQ(sorvoAudioComplexNorm(norm.data(), x.data(), 6, nan), 0);
    for (const float value : norm) EXPECT_TRUE(std::isnan(value));
}

TEST(MagPhase, SplitsRowsIntoMagnitudesAndAngles) {
    const std::vector<float> x = complex_samples();  // 5 rows
    const std::size_t n = x.size() / 2;
    const int frame_n = static_cast<int>(n / 5);
    for (const float power : {0.0F, 1.0F, 2.0F}) {
        std::vector<float> mag(n);
        std::vector<float> angle(n);
        std::vector<float> unit(2 * n);
        ASSERT_EQ(sorvoAudioMagPhase(mag.data(), angle.data(), x.data(), 5, frame_n,
                                     SORVO_AUDIO_PHASE_ANGLE, power),
                  0);
        std::vector<float> expected_mag(n, 1.0F);
        if (power > 0.0F)
            sorvoAudioComplexNorm(expected_mag.data(), x.data(), static_cast<int>(n), power);
        EXPECT_TRUE(same_bits(mag, expected_mag));
        ASSERT_EQ(sorvoAudioMagPhase(mag.data(), unit.data(), x.data(), 5, frame_n,
                                     SORVO_AUDIO_PHASE_COMPLEX, power),
                  0);
        EXPECT_TRUE(same_bits(mag, expected_mag));
        for (std::size_t i = 0; i < n; ++i) {
            const long double expected = std::atan2(static_cast<long double>(x[2 * i + 1]),
                                                    static_cast<long double>(x[2 * i]));
            EXPECT_LE(ulp_error(angle[i], expected), 1.0) << i;
            EXPECT_EQ(std::signbit(angle[i]), std::signbit(expected)) << i;
            EXPECT_LE(ulp_error(unit[2 * i], std::cos(static_cast<long double>(angle[i]))), 1.0);
            EXPECT_LE(ulp_error(unit[2 * i + 1], std::sin(static_cast<long double>(angle[i]))),
                      1.0);
        }
    }
}

}  // namespace
