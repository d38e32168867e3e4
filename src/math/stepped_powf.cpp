#include "math/stepped_powf.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace sorvo::audio {
namespace {

// The tables and polynomials are those of Arm Optimized Routines (MIT licence), from which glibc
// has them.

struct NearbyLog {
    double inverse;
    double log2;
};

/// 16 numbers an octave, from 0.699 2^(i / 16) on.
constexpr NearbyLog nearby_logs[16] = {
    {0x1.661ec79f8f3bep+0, -0x1.efec65b963019p-2}, {0x1.571ed4aaf883dp+0, -0x1.b0b6832d4fca4p-2},
    {0x1.49539f0f010bp+0, -0x1.7418b0a1fb77bp-2},  {0x1.3c995b0b80385p+0, -0x1.39de91a6dcf7bp-2},
    {0x1.30d190c8864a5p+0, -0x1.01d9bf3f2b631p-2}, {0x1.25e227b0b8eap+0, -0x1.97c1d1b3b7afp-3},
    {0x1.1bb4a4a1a343fp+0, -0x1.2f9e393af3c9fp-3}, {0x1.12358f08ae5bap+0, -0x1.960cbbf788d5cp-4},
    {0x1.0953f419900a7p+0, -0x1.a6f9db6475fcep-5}, {0x1p+0, 0x0p+0},
    {0x1.e608cfd9a47acp-1, 0x1.338ca9f24f53dp-4},  {0x1.ca4b31f026aap-1, 0x1.476a9543891bap-3},
    {0x1.b2036576afce6p-1, 0x1.e840b4ac4e4d2p-3},  {0x1.9c2d163a1aa2dp-1, 0x1.40645f0c6651cp-2},
    {0x1.886e6037841edp-1, 0x1.88e9c2c1b9ff8p-2},  {0x1.767dcf5534862p-1, 0x1.ce0a44eb17bccp-2}};

/// 2^(i / 32).
constexpr double roots_of_two[32] = {
    0x1.0000000000000p+0, 0x1.059b0d3158574p+0, 0x1.0b5586cf9890fp+0, 0x1.11301d0125b51p+0,
    0x1.172b83c7d517bp+0, 0x1.1d4873168b9aap+0, 0x1.2387a6e756238p+0, 0x1.29e9df51fdee1p+0,
    0x1.306fe0a31b715p+0, 0x1.371a7373aa9cbp+0, 0x1.3dea64c123422p+0, 0x1.44e086061892dp+0,
    0x1.4bfdad5362a27p+0, 0x1.5342b569d4f82p+0, 0x1.5ab07dd485429p+0, 0x1.6247eb03a5585p+0,
    0x1.6a09e667f3bcdp+0, 0x1.71f75e8ec5f74p+0, 0x1.7a11473eb0187p+0, 0x1.82589994cce13p+0,
    0x1.8ace5422aa0dbp+0, 0x1.93737b0cdc5e5p+0, 0x1.9c49182a3f090p+0, 0x1.a5503b23e255dp+0,
    0x1.ae89f995ad3adp+0, 0x1.b7f76f2fb5e47p+0, 0x1.c199bdd85529cp+0, 0x1.cb720dcef9069p+0,
    0x1.d5818dcfba487p+0, 0x1.dfc97337b9b5fp+0, 0x1.ea4afa2a490dap+0, 0x1.f50765b6e4540p+0};

/// log2 of a finite positive number.
double log2_of(float x) {
    const bool subnormal = x < 0x1p-126F;
    x *= subnormal ? 0x1p23F : 1.0F;
    std::int32_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    bits -= subnormal ? 23 << 23 : 0;
    const std::int32_t above = bits - 0x3F330000;
    const NearbyLog& near = nearby_logs[above >> 19 & 15];
    const std::int32_t fraction_bits = bits - (above & ~0x7FFFFF);
    float m = 0.0F;
    std::memcpy(&m, &fraction_bits, sizeof m);
    const double r = static_cast<double>(m) * near.inverse - 1.0;
    const double square = r * r;
    const double log = 0x1.71547652ab82bp0 * r + (near.log2 + static_cast<double>(above >> 23));
    const double middle = 0x1.ec70a6ca7baddp-2 * r + -0x1.7154748bef6c8p-1;
    const double highest = 0x1.27616c9496e0bp-2 * r + -0x1.71969a075c67ap-2;
    return highest * (square * square) + (middle * square + log);
}

/// 2^x for |x| < 1000.
double exp2_of(double x) {
    constexpr double shift = 0x1.8p47;  // rounds to multiples of 1/32
    const double rounded = x + shift - shift;
    const double r = x - rounded;
    const auto count = static_cast<std::int64_t>(rounded * 32.0);
    const double scale = std::ldexp(roots_of_two[count & 31], static_cast<int>(count >> 5));
    const double high = 0x1.c6af84b912394p-5 * r + 0x1.ebfce50fac4f3p-3;
    const double low = 0x1.62e42ff0c52d6p-1 * r + 1.0;
    return (high * (r * r) + low) * scale;
}

bool is_odd(float x) {
    return std::fabs(x) < 0x1p24F && std::fmod(x, 2.0F) != 0.0F && std::floor(x) == x;
}

}  // namespace

float stepped_powf(float base, float exponent) {
    if (exponent == 0.0F || base == 1.0F) {
        return 1.0F;
    }
    if (std::isnan(base) || std::isnan(exponent)) {
        return base + exponent;
    }
    const bool negative = std::signbit(base) && is_odd(exponent);
    const float magnitude = std::fabs(base);
    float result = 0.0F;
    if (std::isinf(exponent)) {
        const bool grows = (magnitude > 1.0F) == (exponent > 0.0F);
        result = magnitude == 1.0F ? 1.0F : grows ? std::numeric_limits<float>::infinity() : 0.0F;
    } else if (magnitude == 0.0F || std::isinf(magnitude)) {
        result = (magnitude == 0.0F) == (exponent > 0.0F) ? 0.0F
                                                          : std::numeric_limits<float>::infinity();
    } else if (base < 0.0F && std::floor(exponent) != exponent) {
        return std::numeric_limits<float>::quiet_NaN();
    } else {
        const double log = static_cast<double>(exponent) * log2_of(magnitude);
        result = log > 0x1.fffffffd1d571p+6 ? std::numeric_limits<float>::infinity()
                 : log <= -150.0            ? 0.0F
                                            : static_cast<float>(exp2_of(log));
    }
    return negative ? -result : result;
}

}  // namespace sorvo::audio
