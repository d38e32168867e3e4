// Numbers of twice the precision of a double: the unrounded sum of two doubles, the lower one at
// most half a unit in the last place of the higher one. Errors of the operations are below 2^-100
// of the result's magnitude. They use no fused operation, so that they are the same on every
// processor.
#pragma once

#include <array>
#include <cstddef>

namespace sorvo::audio {

struct DoubleDouble {
    double high = 0.0;
    double low = 0.0;
};

/// a + b, exactly.
constexpr DoubleDouble exact_sum(double a, double b) {
    const double sum = a + b;
    const double rest = sum - a;
    return {sum, (a - (sum - rest)) + (b - rest)};
}

/// The same for |a| >= |b| or a = 0.
constexpr DoubleDouble ordered_sum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

/// a b, exactly, for factors below 2^970 whose product is above 2^-900.
constexpr DoubleDouble exact_product(double a, double b) {
    constexpr double splitter = 0x1p27 + 1.0;
    const double a_big = a * splitter;
    const double a_high = a_big - (a_big - a);
    const double a_low = a - a_high;
    const double b_big = b * splitter;
    const double b_high = b_big - (b_big - b);
    const double b_low = b - b_high;
    const double product = a * b;
    return {product,
            ((a_high * b_high - product) + a_high * b_low + a_low * b_high) + a_low * b_low};
}

constexpr DoubleDouble operator-(DoubleDouble a) {
    return {-a.high, -a.low};
}

constexpr DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
    const DoubleDouble high = exact_sum(a.high, b.high);
    const DoubleDouble low = exact_sum(a.low, b.low);
    const DoubleDouble sum = ordered_sum(high.high, high.low + low.high);
    return ordered_sum(sum.high, sum.low + low.low);
}

constexpr DoubleDouble operator+(DoubleDouble a, double b) {
    return a + DoubleDouble{b, 0.0};
}

constexpr DoubleDouble operator-(DoubleDouble a, DoubleDouble b) {
    return a + -b;
}

constexpr DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
    const DoubleDouble product = exact_product(a.high, b.high);
    return ordered_sum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr DoubleDouble operator*(DoubleDouble a, double b) {
    const DoubleDouble product = exact_product(a.high, b);
    return ordered_sum(product.high, product.low + a.low * b);
}

constexpr DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
    const double first = a.high / b.high;
    const DoubleDouble rest = a - b * first;
    const double second = rest.high / b.high;
    const DoubleDouble rest2 = rest - b * second;
    return ordered_sum(first, second) + rest2.high / b.high;
}

/// The sum of c[i] x^i. Of the coefficients from `exact_n` on only the higher halves count: x is so
/// small that the rest would be lost.
template <std::size_t exact_n, std::size_t n>
DoubleDouble polynomial(DoubleDouble x, const std::array<DoubleDouble, n>& c) {
    double tail = c[n - 1].high;
    for (std::size_t i = n - 1; i-- > exact_n;) {
        tail = c[i].high + tail * x.high;
    }
    DoubleDouble sum{tail, 0.0};
    for (std::size_t i = exact_n; i-- > 0;) {
        sum = c[i] + sum * x;
    }
    return sum;
}

}  // namespace sorvo::audio
