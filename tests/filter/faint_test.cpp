#include "filter/faint.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

namespace {

using namespace sorvo::audio;

std::uint64_t bits_of(double x) {
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

/// Any sign, exponent and mantissa, and often the few bits that coefficients have, so that products
/// fall between two multiples of the smallest number.
double any_double(std::mt19937_64& random, int least_exponent, int exponent_n) {
    const std::uint64_t field = (static_cast<std::uint64_t>(least_exponent) +
                                 random() % static_cast<std::uint64_t>(exponent_n))
                                << 52U;
    const std::uint64_t mantissa = random() >> 12U >> (random() % 2) * (random() % 53);
    const std::uint64_t few = mantissa << (random() % 2) * (random() % 53) & ((1ULL << 52U) - 1);
    const std::uint64_t bits = field | few | (random() & 1ULL << 63U);
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

TEST(FaintProduct, HasTheBitsOfTheProduct) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    std::mt19937_64 random(1);
    const auto expect_product = [](double c, double x) {
        volatile double operand = x;  // the processor multiplies, not the compiler
        const double expected = c * operand;
        const double actual = product(c, x);
        if (expected == expected) {
            EXPECT_EQ(bits_of(actual), bits_of(expected)) << c << " * " << x;
        } else {
            EXPECT_NE(actual, actual) << c << " * " << x;
        }
    };
    for (int i = 0; i < 300000; ++i) {
        const double c = any_double(random, 1023 - 30, 40);
        expect_product(c, any_double(random, 0, 4));
        expect_product(c, any_double(random, 0, 120));
        expect_product(any_double(random, 0, 2047), any_double(random, 0, 2047));
    }
    for (const double c : {0.0, -0.0, 0.5, -1.5, 1e300, 4e-310, inf, -inf, inf - inf}) {
        for (const double x : {0.0, -0.0, 5e-324, -1e-323, 1.5e-323, 2e-308, 1.0, inf, inf - inf}) {
            expect_product(c, x);
        }
    }
}

}  // namespace
