#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "elementwise/power.h"
#include "kernels/levels.h"

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

TEST(RaiseToPower, EqualsTheLibraryFunctionAtEveryLevel) {
    const std::vector<float> x = representative_floats();
    for (const float exponent : {0.5F, 1.0F, 0.0F, 0.75F}) {
        std::vector<float> expected(x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            expected[i] = ::powf(x[i], exponent);
        }
        test::for_each_level([&](CpuLevel level) {
            std::vector<float> got(x.size());
            raise_to_power(got.data(), x.data(), x.size(), exponent, level);
            EXPECT_EQ(test::first_difference(got, expected), test::none) << "power " << exponent;
        });
    }
}

TEST(RaiseToPower, WorksInPlaceAndStopsAtTheEnd) {
    for (std::size_t n = 0; n < 100; ++n) {
        std::vector<float> x(n + 1, 2.0F);
        x[n] = 7.0F;
        test::for_each_level([&](CpuLevel level) {
            std::vector<float> data = x;
            raise_to_power(data.data(), data.data(), n, 0.5F, level);
            EXPECT_EQ(data[n], 7.0F);
            EXPECT_TRUE(n == 0 || data[n - 1] == ::sqrtf(2.0F));
        });
    }
}

}  // namespace
