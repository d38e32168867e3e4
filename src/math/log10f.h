// log10f in lanes.
#pragma once

#include "math/exact.h"
#include "math/form.h"
#include "math/lanes.h"
#include "simd/shuffle.h"

extern "C" float log10f(float);

namespace sorvo::audio::SORVO_LEVEL {
namespace {

// Rounded.

constexpr std::int64_t log_margin = std::int64_t{1} << 10;  // 2^-43 to 2^-42 of the value

/// log10(2^k (1 + f)), given a reciprocal of 2 + f.
SORVO_INLINE DoubleVec log10_of(DoubleVec f, DoubleVec reciprocal, DoubleVec k) {
    const DoubleVec s = quotient(f, f + 2.0, reciprocal);
    return plus_product_somehow(s * polynomial(s * s, log10_series), k,
                                broadcast_double(0x1.34413509f79ffp-2));
}

[[gnu::noinline, gnu::cold]] FloatVec settle_log10f(FloatVec x, Wide log, MaskVec special) {
    return replaced(narrow(log), special | in_doubt<log_margin>(log),
                    [x](int lane) { return exact_log10f(x[lane]); });
}

SORVO_INLINE FloatVec rounded_log10f(FloatVec x) {
    const Split parts = split(x);
    const Wide f = widen(parts.m - 1.0F);
    const Wide reciprocal = widen(1.0F / (parts.m + 1.0F));
    const Wide k = widen(parts.exponent);
    const Wide log = {log10_of(f.low, reciprocal.low, k.low),
                      log10_of(f.high, reciprocal.high, k.high)};
    const MaskVec special = ~((x >= 0x1p-126F) & (x < __builtin_inff()));
    return any(special | any_near_middle<log_margin>(log)) ? settle_log10f(x, log, special)
                                                           : narrow(log);
}

// Classic: x = 2^k m with m in [1, 2), or in [0.5, 1) for negative k. log(m) is that of glibc's
// logf, whose constants come from Arm Optimized Routines (MIT licence): m times the tabled inverse
// of a number nearby is 1 + r with small r. The float steps around it have their constants from
// fdlibm (Sun Microsystems 1993; free to use where this notice is kept). Fused or not, log(m) is
// the same for each of the 2^24 values of m.

struct NearbyLog {
    double inverse;
    double log;
};

/// 16 numbers an octave, from 0.699 2^(i / 16) on. This is what the table below is made of.
constexpr NearbyLog octave_of_logs[16] = {
    {0x1.661ec79f8f3bep+0, -0x1.57bf7808caadep-2}, {0x1.571ed4aaf883dp+0, -0x1.2bef0a7c06ddbp-2},
    {0x1.49539f0f010bp+0, -0x1.01eae7f513a67p-2},  {0x1.3c995b0b80385p+0, -0x1.b31d8a68224e9p-3},
    {0x1.30d190c8864a5p+0, -0x1.6574f0ac07758p-3}, {0x1.25e227b0b8eap+0, -0x1.1aa2bc79c81p-3},
    {0x1.1bb4a4a1a343fp+0, -0x1.a4e76ce8c0e5ep-4}, {0x1.12358f08ae5bap+0, -0x1.1973c5a611cccp-4},
    {0x1.0953f419900a7p+0, -0x1.252f438e10c1ep-5}, {0x1p+0, 0x0p+0},
    {0x1.e608cfd9a47acp-1, 0x1.aa5aa5df25984p-5},  {0x1.ca4b31f026aap-1, 0x1.c5e53aa362eb4p-4},
    {0x1.b2036576afce6p-1, 0x1.526e57720db08p-3},  {0x1.9c2d163a1aa2dp-1, 0x1.bc2860d22477p-3},
    {0x1.886e6037841edp-1, 0x1.1058bc8a07ee1p-2},  {0x1.767dcf5534862p-1, 0x1.4043057b6ee09p-2}};

constexpr int first_nearby = -7;  // that of m = 0.5, counted from the one of 0.699
constexpr std::size_t nearby_n = 33;

struct NearbyLogs {
    NearbyLog entry[nearby_n];
};

constexpr NearbyLogs nearby_logs = [] {
    NearbyLogs result{};
    for (int i = 0; i < static_cast<int>(nearby_n); ++i) {
        const int octave = (i + first_nearby + 16) / 16 - 1;
        const NearbyLog& near = octave_of_logs[i + first_nearby - 16 * octave];
        const double scale = octave < 0 ? 2.0 : octave == 0 ? 1.0 : 0.5;
        result.entry[i] = {near.inverse * scale, near.log + octave * 0x1.62e42fefa39efp-1};
    }
    return result;
}();

SORVO_INLINE Vec<double, 2> load_nearby(std::int32_t index) {
    Vec<double, 2> result;
    __builtin_memcpy(&result, &nearby_logs.entry[index], sizeof result);
    return result;
}

/// Of the tabled pairs of `n` lanes those with even, or odd, lanes.
template <std::size_t n>
SORVO_INLINE Vec<double, n> load_every_other(const std::int32_t* index) {
    if constexpr (n == 2) {
        return load_nearby(*index);
    } else {
        return concatenate(load_every_other<n / 2>(index), load_every_other<n / 2>(index + n / 2));
    }
}

SORVO_INLINE DoubleVec classic_log(DoubleVec m, const std::int32_t* index) {
    const auto even = load_every_other<double_lane_n>(index);
    const auto odd = load_every_other<double_lane_n>(index + 1);
    const DoubleVec inverse = zip_quarters_low(even, odd);
    const DoubleVec log = zip_quarters_high(even, odd);
    const DoubleVec r = plus_product_somehow(broadcast_double(-1.0), m, inverse);
    const DoubleVec square = r * r;
    const DoubleVec y = plus_product_somehow(broadcast_double(-0x1.ffffef20a4123p-2), r,
                                             broadcast_double(0x1.5575b0be00b6ap-2));
    return plus_product_somehow(
        log + r, square, plus_product_somehow(y, square, broadcast_double(-0x1.00ea348b88334p-2)));
}

SORVO_INLINE FloatVec classic_log10f(FloatVec x) {
    const IntVec exponent = (ints_of(x) >> 23) - 127;
    const MaskVec below_one = exponent < 0;
    const IntVec m = ((ints_of(x) & 0x7FFFFF) | 0x3F800000) - (below_one & 0x800000);
    const FloatVec k = __builtin_convertvector(exponent - below_one, FloatVec);
    const MaskVec special = ~((x >= 0x1p-126F) & (x < __builtin_inff()));
    std::int32_t index[lane_n];
    store(index, ~special & (((m - 0x3F330000) >> 19) - first_nearby));
    const Wide wide = widen(floats_of(m));
    const FloatVec log =
        narrow({classic_log(wide.low, index), classic_log(wide.high, index + double_lane_n)});
    const FloatVec low = k * 7.9034151668e-07F + 4.3429449201e-01F * log;
    const FloatVec result = low + k * 3.0102920532e-01F;
    return any(special) ? replaced(result, special, [x](int lane) { return ::log10f(x[lane]); })
                        : result;
}

template <MathForm form>
SORVO_INLINE FloatVec log10f_of(FloatVec x) {
    return form == MathForm::rounded ? rounded_log10f(x) : classic_log10f(x);
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
