// Floats of every size, and what the true value of a function makes of one.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace sorvo::test {

inline float float_of(std::uint32_t bits) {
    float x = 0.0F;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

/// Of each sign and exponent some floats, its ends among them: subnormals, infinities and NaN too.
inline std::vector<float> floats_of_every_size() {
    std::vector<float> result;
    std::uint32_t fraction = 0x1234567;
    for (std::uint32_t exponent = 0; exponent < 512; ++exponent) {
        for (std::uint32_t i = 0; i < 60; ++i) {
            fraction = fraction * 1664525U + 1013904223U;
            const std::uint32_t low = i < 20 ? i - 10 : fraction >> 9;
            result.push_back(float_of((exponent << 23) + low));
        }
    }
    return result;
}

/// Whether x is the float nearest to a value that is known to 2^-58 of itself.
inline bool is_nearest(float x, long double value) {
    if (std::isnan(value)) return std::isnan(x);
    return (x == static_cast<float>(value * (1 - 0x1p-58L)) ||
            x == static_cast<float>(value * (1 + 0x1p-58L))) &&
           std::signbit(x) == std::signbit(value);
}

}  // namespace sorvo::test
