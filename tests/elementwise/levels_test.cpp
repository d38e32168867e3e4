#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "elementwise/decibel.h"
#include "elementwise/magphase.h"
#include "math/complex_norm.h"
#include "math/power.h"
#include "support/compare.h"
#include "support/levels.h"
#include "support/signals.h"

namespace {

using namespace sorvo::audio;

/// Every 509th float, both signs and every kind, with its neighbours around powers of two.
std::vector<float> representative_floats() {
    std::vector<float> values;
    const auto add = [&values](std::uint32_t bits) {
        float x = 0.0F;
        std::memcpy(&x, &bits, sizeof x);
        values.push_back(std::isnan(x) ? std::numeric_limits<float>::quiet_NaN() : x);
    };
    for (std::uint64_t bits = 0; bits < std::uint64_t{1} << 32; bits += 509) {
        add(static_cast<std::uint32_t>(bits));
    }
    for (std::uint32_t exponent = 0; exponent < 512; ++exponent) {
        for (std::uint32_t offset = 0; offset < 64; ++offset) {
            add((exponent << 23) + offset - 32);
        }
    }
    return values;
}

class RaiseToPower : public sorvo::test::AtLevel {};

TEST_P(RaiseToPower, EqualsTheLibraryFunction) {
    const std::vector<float> x = representative_floats();
    for (const float exponent : {0.5F, 1.0F, 0.0F, 0.75F}) {
        std::vector<float> expected(x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            expected[i] = ::powf(x[i], exponent);
        }
        std::vector<float> got(x.size());
        raise_to_power(got.data(), x.data(), x.size(), exponent, GetParam());
        EXPECT_TRUE(sorvo::test::same_bits(got, expected)) << "power " << exponent;
    }
}

TEST_P(RaiseToPower, WorksInPlaceAndStopsAtTheEnd) {
    for (std::size_t n = 0; n < 100; ++n) {
        std::vector<float> x(n + 1, 2.0F);
        x[n] = 7.0F;
        std::vector<float> data = x;
        raise_to_power(data.data(), data.data(), n, 0.5F, GetParam());
        EXPECT_EQ(data[n], 7.0F);
        EXPECT_TRUE(n == 0 || data[n - 1] == ::sqrtf(2.0F));
    }
}

SORVO_TEST_AT_ALL_LEVELS(RaiseToPower);

TEST(ElementwiseLoops, ComplexNormsOfAnyLengthEqualThePowerOfTheSum) {
    const std::vector<float> z = sorvo::test::noise(1400, 3.0F);
    for (const float power : {2.0F, 1.0F, 0.0F, 1.7F}) {
        for (const std::size_t n : {0U, 1U, 31U, 255U, 256U, 257U, 700U}) {
            std::vector<float> expected(n);
            for (std::size_t i = 0; i < n; ++i) {
                const float re = z[2 * i];
                const float im = z[2 * i + 1];
                expected[i] = ::powf(im * im + re * re, power * 0.5F);
            }
            std::vector<float> src(z.begin(), z.begin() + static_cast<std::ptrdiff_t>(2 * n));
            std::vector<float> norms(n);
            complex_norm_1d(norms, src, power);
            EXPECT_TRUE(sorvo::test::same_bits(norms, expected)) << power << ", " << n;
            std::vector<float> interleaved = src;
            complex_norm_1d(interleaved, power);
            complex_norm_1d_core(src.data(), src.data(), static_cast<int>(n), power);
            for (std::size_t i = 0; i < n; ++i) {
                EXPECT_EQ(src[i], expected[i]);
                EXPECT_EQ(interleaved[2 * i], expected[i]);
                EXPECT_EQ(interleaved[2 * i + 1], 0.0F);
            }
        }
    }
}

TEST(ElementwiseLoops, DecibelsAreRelativeToTheMaximumWhereverItIs) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const std::size_t n : {1U, 31U, 32U, 33U, 97U}) {
        for (std::size_t at = 0; at < n; ++at) {
            std::vector<float> x(n, 0.5F);
            x[(at + 1) % n] = nan;
            x[at] = 8.0F;
            std::vector<float> dst(n);
            convert_power_to_db(dst.data(), x.data(), static_cast<int>(n), -1.0F);
            const float ref = std::isnan(x[0]) ? 1e-10F : 8.0F;
            for (std::size_t i = 0; i < n; ++i) {
                EXPECT_EQ(dst[i], power_to_db(x[i], ref)) << n << ", maximum at " << at;
            }
        }
    }
}

}  // namespace
