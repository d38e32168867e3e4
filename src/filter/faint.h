// Numbers so small that products with them are denormal, or soon will be. Processors take a hundred
// times as long over a product where a denormal number turns up.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace sorvo::audio {

/// Not 0: products with that are quick.
inline bool is_faint(double x) {
    constexpr double limit = 0x1p-960;
    return x != 0.0 && x < limit && x > -limit;
}

/// No float, nor a product with one, is a denormal double.
constexpr bool is_faint(float /*x*/) {
    return false;
}

template <class T>
bool any_faint(const T* x, std::size_t n) {
    bool any = false;
    for (std::size_t i = 0; i < n; ++i) {
        any |= is_faint(x[i]);
    }
    return any;
}

#if defined(__SIZEOF_INT128__)

/// c x, with its bits, by whole numbers where a denormal number turns up: these are multiples of
/// 2^-1074, and their bits are the multiple.
[[gnu::noinline]] inline double faint_product(double c, double x) {
    __extension__ using Wide = unsigned __int128;
    constexpr int mantissa_n = 52;
    constexpr std::uint64_t implicit = std::uint64_t{1} << mantissa_n;
    constexpr std::uint64_t sign = std::uint64_t{1} << 63U;
    constexpr int not_finite = 0x7ff;
    std::uint64_t c_bits = 0;
    std::uint64_t x_bits = 0;
    std::memcpy(&c_bits, &c, sizeof c);
    std::memcpy(&x_bits, &x, sizeof x);
    const auto exponent = [](std::uint64_t bits) {
        return static_cast<int>(bits >> mantissa_n & not_finite);
    };
    const int c_exponent = exponent(c_bits);
    const int x_exponent = exponent(x_bits);
    constexpr int least_normal = 1025;
    const bool is_normal = x_exponent > 0 && c_exponent + x_exponent > least_normal;
    if (is_normal || x == 0.0 || c_exponent == not_finite || (c_exponent == 0 && c != 0.0)) {
        return c * x;
    }
    const auto mantissa = [](std::uint64_t bits, bool has_implicit) {
        return (bits & (implicit - 1)) | (has_implicit ? implicit : 0);
    };
    // The product is a multiple of 2^(-1074 - shift).
    const int shift = 1076 - c_exponent - std::max(x_exponent, 1);
    std::uint64_t multiple = 0;
    if (shift < 1) {
        return c * x;
    }
    if (shift < 2 * (mantissa_n + 2)) {
        const Wide exact =
            Wide{mantissa(c_bits, c_exponent > 0)} * mantissa(x_bits, x_exponent > 0);
        const Wide odd = exact >> shift & 1U;  // ties go to even numbers
        const Wide rounded = (exact + (Wide{1} << (shift - 1)) - 1 + odd) >> shift;
        if (rounded > Wide{2} * implicit) {
            return c * x;  // not each multiple is a double
        }
        multiple = static_cast<std::uint64_t>(rounded);
    }
    multiple |= (c_bits ^ x_bits) & sign;
    double result = 0.0;
    std::memcpy(&result, &multiple, sizeof result);
    return result;
}

#else

inline double faint_product(double c, double x) {
    return c * x;
}

#endif

/// The same, in less time for most numbers.
inline double product(double c, double x) {
    return is_faint(x) ? faint_product(c, x) : c * x;
}

}  // namespace sorvo::audio
