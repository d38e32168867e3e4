#include "math/exact.h"

#include <gtest/gtest.h>

#include "math/samples.h"
#include "math/stepped_powf.h"
#include "support/compare.h"
#include "support/random.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

TEST(Exact, FloatsAreTheNearestOnes) {
    const std::vector<float> all = floats_of_every_size();
    for (std::size_t i = 0; i < all.size(); ++i) {
        const long double x = all[i];
        EXPECT_TRUE(is_nearest(exact_log10f(all[i]), std::log10(x))) << all[i];
        EXPECT_TRUE(is_nearest(exact_log1pf(all[i]), std::log1p(x))) << all[i];
        const float y = all[i * 7919 % all.size()];
        EXPECT_TRUE(is_nearest(exact_atan2f(y, all[i]), std::atan2(static_cast<long double>(y), x)))
            << y << ", " << all[i];
    }
}

// Values beside the middle of two floats, closer than a long double shows.
TEST(Exact, DecidesTheHardestRoundings) {
    // x - x^2 / 2 + x^3 / 3 is the middle but for the last term.
    EXPECT_EQ(exact_log1pf(0x1p-24F), 0x1p-24F);
    // 3 and 5 halves of the least float, less a part of 2^-299.
    EXPECT_EQ(exact_atan2f(0x3p-149F, 2.0F), 0x1p-149F);
    EXPECT_EQ(exact_atan2f(-0x5p-149F, 2.0F), -0x2p-149F);
    EXPECT_EQ(exact_atan2f(0x1p-149F, 2.0F), 0.0F);
    // Powers of ten have logarithms that are no roundings at all.
    for (int n = -10; n <= 10; ++n) {
        EXPECT_EQ(exact_log10(std::pow(10.0, std::abs(n))), std::abs(n));
        EXPECT_EQ(exact_log10f(std::pow(10.0F, static_cast<float>(std::abs(n)))), std::abs(n));
    }
}

TEST(Exact, DoublesAreTheNearestOnes) {
    const auto nearest = [](double got, long double value) {
        const double ulp = std::nextafter(std::fabs(got), HUGE_VAL) - std::fabs(got);
        return std::fabs(got - value) <= 0.5005L * ulp;
    };
    Random random(3);
    for (int i = 0; i < 20000; ++i) {
        const double x = 1000.0 * random.value() * (i % 2 != 0 ? 1.0 : 1e-3);
        const long double wide = x;
        EXPECT_TRUE(nearest(exact_sin(x), std::sin(wide))) << x;
        EXPECT_TRUE(nearest(exact_cos(x), std::cos(wide))) << x;
        const double positive = std::exp(x / 2.0);
        EXPECT_TRUE(nearest(exact_log10(positive), std::log10(static_cast<long double>(positive))))
            << positive;
    }
    EXPECT_EQ(bits_of(exact_sin(-0.0)), bits_of(-0.0));
    EXPECT_EQ(exact_cos(0.0), 1.0);
    EXPECT_EQ(exact_log10(0.0), -HUGE_VAL);
    EXPECT_EQ(exact_log10(HUGE_VAL), HUGE_VAL);
    EXPECT_TRUE(std::isnan(exact_log10(-1.0)));
}

TEST(SteppedPowf, IsAsNearAsItIsSaidToBe) {
    const std::vector<float> all = floats_of_every_size();
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (const float y : {0.5F, 0.15F, -1.25F, 2.0F, 3.0F, all[i * 7919 % all.size()]}) {
            const float got = stepped_powf(all[i], y);
            const long double value = std::pow(static_cast<long double>(all[i]), y);
            const auto rounded = static_cast<float>(value);
            const bool exact = rounded == 0.0F || !std::isfinite(rounded);
            EXPECT_TRUE(exact ? is_nearest(got, value) : ulp_error(got, value) < 0.83)
                << all[i] << "^" << y << " = " << got;
        }
    }
}

}  // namespace
