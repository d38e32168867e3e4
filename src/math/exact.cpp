#include "math/exact.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "math/double_double.h"
#include "math/series.h"

namespace sorvo::audio {
namespace {

constexpr double pi = 0x1.921fb54442d18p1;
constexpr DoubleDouble ln_2{0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};
constexpr DoubleDouble log10_of_2{0x1.34413509f79ffp-2, -0x1.9dc1da994fd21p-59};
constexpr DoubleDouble log10_of_e{0x1.bcb7b1526e50ep-2, 0x1.95355baaafad3p-57};

/// The nearest float. Rounded to a double first, a number beside the middle of two floats could
/// become that middle; so what is dropped first is kept in the last bit.
float nearest_float(DoubleDouble x) {
    std::int64_t bits = 0;
    std::memcpy(&bits, &x.high, sizeof bits);
    if (x.low != 0.0 && bits % 2 == 0) {
        bits += (x.low > 0.0) == (x.high > 0.0) ? 1 : -1;
    }
    std::memcpy(&x.high, &bits, sizeof bits);
    return static_cast<float>(x.high);
}

// The power series. From the terms named here on a double's precision is enough for a coefficient.

constexpr std::size_t artanh_exact_n = 10;
constexpr std::size_t sine_exact_n = 9;

/// artanh(s) / s in powers of s^2, for |s| < 0.1716.
constexpr auto artanh_series = [] {
    std::array<DoubleDouble, 22> series{};
    for (std::size_t i = 0; i < series.size(); ++i) {
        series[i] = DoubleDouble{1.0} / DoubleDouble{2.0 * static_cast<double>(i) + 1.0};
    }
    return series;
}();

/// cos(x), or sin(x) / x, in powers of x^2, for |x| < pi / 4.
template <bool sine>
constexpr auto circular_series = [] {
    std::array<DoubleDouble, 15> series{};
    DoubleDouble term{1.0};
    for (std::size_t i = 0; i < series.size(); ++i) {
        series[i] = term;
        const double n = 2.0 * static_cast<double>(i) + (sine ? 2.0 : 1.0);
        term = -term / DoubleDouble{n * (n + 1.0)};
    }
    return series;
}();

/// log(1 + f) for 1 + f between sqrt(1/2) and sqrt(2).
DoubleDouble log_near_one(DoubleDouble f) {
    const DoubleDouble s = f / (f + 2.0);
    return s * polynomial<artanh_exact_n>(s * s, artanh_series) * 2.0;
}

/// x = 2^exponent m with m between sqrt(1/2) and sqrt(2).
struct Scaled {
    int exponent;
    double m;
};

Scaled scaled(double x) {
    Scaled result{};
    result.m = std::frexp(x, &result.exponent);
    if (result.m < 0x1.6a09e667f3bcdp-1) {
        result.m *= 2.0;
        --result.exponent;
    }
    return result;
}

/// For finite x > 0.
DoubleDouble log10_of(double x) {
    const Scaled parts = scaled(x);
    return log10_of_2 * parts.exponent + log10_of_e * log_near_one({parts.m - 1.0, 0.0});
}

/// The logarithm of what is no finite positive number.
double log_of_special(double x) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return x == 0.0 ? -infinity : x > 0.0 ? x : std::numeric_limits<double>::quiet_NaN();
}

bool is_finite_positive(double x) {
    return x > 0.0 && x < std::numeric_limits<double>::infinity();
}

struct SineAndCosine {
    DoubleDouble sine;
    DoubleDouble cosine;
};

SineAndCosine sine_and_cosine(double angle) {
    constexpr std::array<double, 3> half_pi = {0x1.921fb54442d18p0, 0x1.1a62633145c07p-54,
                                               -0x1.f1976b7ed8fbcp-110};
    const double n = std::floor(angle * (2.0 / pi) + 0.5);
    const DoubleDouble turned = exact_product(n, half_pi[0]);
    const DoubleDouble x = exact_sum(angle - turned.high, -turned.low) -
                           exact_product(n, half_pi[1]) + -n * half_pi[2];
    const DoubleDouble square = x * x;
    const DoubleDouble sine = x * polynomial<sine_exact_n>(square, circular_series<true>);
    const DoubleDouble cosine = polynomial<sine_exact_n>(square, circular_series<false>);
    switch (static_cast<std::int64_t>(n) & 3) {
        case 0:
            return {sine, cosine};
        case 1:
            return {cosine, -sine};
        case 2:
            return {-sine, -cosine};
        default:
            return {-cosine, sine};
    }
}

double rough_atan(double t) {
    double sum = 0.0;
    for (std::size_t i = std::size(atan_series); i-- > 0;) {
        sum = atan_series[i] + sum * (t * t);
    }
    return sum * t;
}

/// The angle of (x, y) to 40 bits; x and y are finite, y is not zero.
double rough_angle(double y, double x) {
    const double a = std::fabs(x);
    const double b = std::fabs(y);
    const double less = a < b ? a : b;
    const double greater = a < b ? b : a;
    double angle = less > 0.5 * greater
                       ? 0.25 * pi + rough_atan((less - greater) / (less + greater))
                       : rough_atan(less / greater);
    angle = b > a ? 0.5 * pi - angle : angle;
    angle = x < 0.0 ? pi - angle : angle;
    return std::copysign(angle, y);
}

}  // namespace

float exact_log10f(float x) {
    const auto wide = static_cast<double>(x);
    return is_finite_positive(wide) ? nearest_float(log10_of(wide))
                                    : static_cast<float>(log_of_special(wide));
}

float exact_log1pf(float x) {
    const auto wide = static_cast<double>(x);
    if (x == 0.0F) {
        return x;
    }
    if (!is_finite_positive(1.0 + wide)) {
        return static_cast<float>(log_of_special(1.0 + wide));
    }
    const int exponent = scaled(1.0 + wide).exponent;
    const double scale = std::ldexp(1.0, -exponent);
    const DoubleDouble f = exact_sum(wide * scale, -1.0) + scale;
    return nearest_float(ln_2 * exponent + log_near_one(f));
}

float exact_atan2f(float y, float x) {
    auto b = static_cast<double>(y);
    auto a = static_cast<double>(x);
    if (std::isnan(a) || std::isnan(b)) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    if (std::isinf(a) || std::isinf(b)) {  // beside infinity, finite numbers are nothing
        b = std::copysign(std::isinf(b) ? 1.0 : 0.0, b);
        a = std::copysign(std::isinf(a) ? 1.0 : 0.0, a);
    }
    if (b == 0.0) {
        return static_cast<float>(std::copysign(std::signbit(a) ? pi : 0.0, b));
    }
    const double ratio = b / a;
    if (a > 0.0 && std::fabs(ratio) < 0x1p-60) {
        // The angle is less than the ratio, by less than any digit that could be kept.
        const DoubleDouble product = exact_product(ratio, a);
        const double rest = (b - product.high) - product.low;
        return nearest_float({ratio, rest != 0.0 ? rest / a : -ratio * 0x1p-60});
    }
    // Turned back by the rough angle, the point is close to the axis.
    const double rough = rough_angle(b, a);
    const SineAndCosine turn = sine_and_cosine(rough);
    const DoubleDouble rest = (turn.cosine * b - turn.sine * a) / (turn.cosine * a + turn.sine * b);
    return nearest_float(rest + rough);
}

double exact_log10(double x) {
    return is_finite_positive(x) ? log10_of(x).high : log_of_special(x);
}

double exact_sin(double x) {
    return x == 0.0 ? x : sine_and_cosine(x).sine.high;
}

double exact_cos(double x) {
    return sine_and_cosine(x).cosine.high;
}

}  // namespace sorvo::audio
