// log1pf in lanes.
#pragma once

#include "math/exact.h"
#include "math/form.h"
#include "math/lanes.h"

extern "C" float log1pf(float);

namespace sorvo::audio::SORVO_LEVEL {
namespace {

// Rounded: 1 + x = 2^k (1 + f).

constexpr std::int64_t log1p_margin = std::int64_t{1} << 10;  // 2^-43 to 2^-42 of the value

/// log(1 + x), given k, 2^-k and a reciprocal of 2 + f.
SORVO_INLINE DoubleVec log1p_of(DoubleVec x, DoubleVec scale, DoubleVec reciprocal, DoubleVec k) {
    const DoubleVec f = plus_product_somehow(scale - 1.0, x, scale);  // x itself for k = 0
    const DoubleVec s = quotient(f, f + 2.0, reciprocal);
    return plus_product_somehow(s * polynomial(s * s, log_series), k,
                                broadcast_double(0x1.62e42fefa39efp-1));
}

[[gnu::noinline, gnu::cold]] FloatVec settle_log1pf(FloatVec x, Wide log, MaskVec special) {
    return replaced(narrow(log), special | in_doubt<log1p_margin>(log),
                    [x](int lane) { return exact_log1pf(x[lane]); });
}

SORVO_INLINE FloatVec rounded_log1pf(FloatVec x) {
    const Split parts = split(1.0F + x);
    const Wide wide = widen(x);
    const Wide scale = widen(power_of_two(-parts.exponent));
    const Wide reciprocal = widen(1.0F / (parts.m + 1.0F));
    const Wide k = widen(parts.exponent);
    const Wide log = {log1p_of(wide.low, scale.low, reciprocal.low, k.low),
                      log1p_of(wide.high, scale.high, reciprocal.high, k.high)};
    const MaskVec special = ~((x > -1.0F) & (x < 0x1p125F));
    const FloatVec result = any(special | any_near_middle<log1p_margin>(log))
                                ? settle_log1pf(x, log, special)
                                : narrow(log);
    return with_sign_of(x, result);  // for -0
}

// Classic: the algorithm and the constants of fdlibm (Sun Microsystems 1993; free to use where this
// notice is kept). It treats several ranges apart; here one formula serves them all, because in the
// other ranges the terms that it has in addition are lost in rounding.

SORVO_INLINE FloatVec classic_log1pf(FloatVec x) {
    const MaskVec near_zero = (x >= -0x1.2bec3ep-2F) & (x < 0x1.a827aep-2F);
    const FloatVec sum = 1.0F + x;
    // What is lost in the sum: the lesser number less what of it is in the sum.
    const IntVec swap = (sum >= 2.0F) & (ints_of(x) ^ 0x3F800000);
    const FloatVec lesser = floats_of(ints_of(x) ^ swap);
    const FloatVec greater = floats_of(swap ^ 0x3F800000);
    const FloatVec lost = (lesser - (sum - greater)) / sum;
    // sum = 2^k (1 + f) with 1 + f between sqrt(1/2) and sqrt(2); but near zero k = 0 and f = x.
    const IntVec fraction = ints_of(sum) & 0x7FFFFF;
    const MaskVec halved = fraction >= 0x3504F7;
    const IntVec exponent = ~near_zero & ((ints_of(sum) >> 23) - 127 - halved);
    const FloatVec m = floats_of((fraction | 0x3F800000) - (halved & 0x800000));
    const FloatVec f = near_zero ? x : m - 1.0F;
    const FloatVec k = __builtin_convertvector(exponent, FloatVec);
    const FloatVec half_square = 0.5F * f * f;
    const FloatVec s = f / (2.0F + f);
    const FloatVec z = s * s;
    FloatVec r = broadcast(1.4798198640e-01F);
    for (const float c : {1.5313838422e-01F, 1.8183572590e-01F, 2.2222198546e-01F,
                          2.8571429849e-01F, 4.0000000596e-01F, 6.6666668653e-01F}) {
        r = c + z * r;
    }
    const FloatVec low = k * 9.0580006145e-06F + where(exponent != 0, lost);
    const FloatVec high = k * 6.9313812256e-01F;
    const FloatVec result =
        with_sign_of(x, high - ((half_square - (s * (half_square + z * r) + low)) - f));  // for -0
    const MaskVec special = ~((x > -1.0F) & (x < __builtin_inff()));
    return any(special) ? replaced(result, special, [x](int lane) { return ::log1pf(x[lane]); })
                        : result;
}

template <MathForm form>
SORVO_INLINE FloatVec log1pf_of(FloatVec x) {
    return form == MathForm::rounded ? rounded_log1pf(x) : classic_log1pf(x);
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
