// atan2f in lanes.
#pragma once

#include "math/exact.h"
#include "math/form.h"
#include "math/lanes.h"
#include "simd/shuffle.h"

extern "C" float atan2f(float, float);

namespace sorvo::audio::SORVO_LEVEL {
namespace {

// Rounded: an angle below pi/4 from the magnitudes, turned by multiples of pi/4 to where it
// belongs.

constexpr std::int64_t atan_margin = std::int64_t{3} << 12;  // 2^-40.4 to 2^-39.4 of the value

/// atan(numerator / (greater + added)) + octants pi/4.
SORVO_INLINE DoubleVec angle_of(DoubleVec numerator, DoubleVec greater, DoubleVec added,
                                DoubleVec reciprocal, DoubleVec octants) {
    const DoubleVec t = quotient(numerator, greater + added, reciprocal);
    return plus_product_somehow(t * polynomial(t * t, atan_series), octants,
                                broadcast_double(0x1.921fb54442d18p-1));
}

[[gnu::noinline, gnu::cold]] FloatVec settle_atan2f(FloatVec y, FloatVec x, Wide angle,
                                                    MaskVec special) {
    return replaced(narrow(angle), special | in_doubt<atan_margin>(angle),
                    [y, x](int lane) { return exact_atan2f(y[lane], x[lane]); });
}

SORVO_INLINE FloatVec rounded_atan2f(FloatVec y, FloatVec x) {
    const FloatVec a = magnitude_of(x);
    const FloatVec b = magnitude_of(y);
    const MaskVec steep = b > a;
    const MaskVec left = ints_of(x) < 0;
    const FloatVec less = b < a ? b : a;  // NaN if a is, and the other if b is
    const FloatVec either = a > b ? a : b;
    const FloatVec greater = floats_of(ints_of(either) | ((either == 0.0F) & 0x3F800000));
    const MaskVec diagonal = less > 0.5F * greater;
    const FloatVec added = where(diagonal, less);
    const FloatVec numerator = less - where(diagonal, greater);
    // The octants are 0 or 1; from a steep angle 2 less that many, to the left 4 less that many.
    IntVec octants = diagonal & 1;
    octants = (octants ^ steep) + (steep & 3);
    octants = (octants ^ left) + (left & 5);
    const IntVec flip = (steep ^ left) & static_cast<std::int32_t>(0x80000000);
    const Wide wide_numerator = widen(floats_of(ints_of(numerator) ^ flip));
    const Wide wide_greater = widen(greater);
    const Wide wide_added = widen(added);
    const Wide reciprocal = widen(1.0F / (greater + added));
    const Wide wide_octants = widen(octants);
    const Wide angle = {angle_of(wide_numerator.low, wide_greater.low, wide_added.low,
                                 reciprocal.low, wide_octants.low),
                        angle_of(wide_numerator.high, wide_greater.high, wide_added.high,
                                 reciprocal.high, wide_octants.high)};
    FloatVec result = narrow(angle);
    // What is not finite, reciprocals that are no normal floats, and results that are neither.
    const MaskVec ordinary = (greater >= 0x1p-100F) & (greater < 0x1p125F) & (less <= greater) &
                             ((magnitude_of(result) >= 0x1p-126F) | (less == 0.0F));
    if (any(~ordinary | any_near_middle<atan_margin>(angle))) {
        result = settle_atan2f(b, x, angle, ~ordinary);
    }
    return with_sign_of(y, result);
}

// Classic: the algorithm and the constants of fdlibm (Sun Microsystems 1993; free to use where this
// notice is kept). It treats many ranges apart; here the ranges differ by tabled numbers, where
// these give the same roundings, or in nothing where the result is the same.

/// table[index].
SORVO_INLINE FloatVec look_up(const float (&table)[16], IntVec index) {
    if constexpr (lane_n > 4) {
        return permute(load(table), reinterpret_cast<BitsVec>(index));
    } else {
        return FloatVec{table[index[0]], table[index[1]], table[index[2]], table[index[3]]};
    }
}

/// atan(t) for t >= 0 as atan(c) + atan((t - c) / (1 + c t)), for c = 0, 0.5, 1, 1.5 and infinity.
SORVO_INLINE FloatVec classic_atanf(FloatVec t) {
    // Numerators a t + b, denominators c t + d.
    static constexpr float a[16] = {1.0F, 2.0F, 1.0F, 1.0F, 0.0F};
    static constexpr float b[16] = {0.0F, -1.0F, -1.0F, -1.5F, -1.0F};
    static constexpr float c[16] = {0.0F, 1.0F, 1.0F, 1.5F, 1.0F};
    static constexpr float d[16] = {1.0F, 2.0F, 1.0F, 1.0F, 0.0F};
    static constexpr float high[16] = {0.0F, 4.6364760399e-01F, 7.8539812565e-01F,
                                       9.8279368877e-01F, 1.5707962513e+00F};
    static constexpr float low[16] = {0.0F, 5.0121582440e-09F, 3.7748947079e-08F, 3.4473217170e-08F,
                                      7.5497894159e-08F};
    t = t >= 0x1p25F ? broadcast(0x1p60F) : t;
    const IntVec range = -((t >= 0.4375F) + (t >= 0.6875F) + (t >= 1.1875F) + (t >= 2.4375F));
    const FloatVec x =
        (t * look_up(a, range) + look_up(b, range)) / (t * look_up(c, range) + look_up(d, range));
    const FloatVec z = x * x;
    const FloatVec w = z * z;
    FloatVec odd = broadcast(1.6285819933e-02F);
    for (const float term : {4.9768779427e-02F, 6.6610731184e-02F, 9.0908870101e-02F,
                             1.4285714924e-01F, 3.3333334327e-01F}) {
        odd = term + w * odd;
    }
    FloatVec even = broadcast(-3.6531571299e-02F);
    for (const float term :
         {-5.8335702866e-02F, -7.6918758452e-02F, -1.1111110449e-01F, -2.0000000298e-01F}) {
        even = term + w * even;
    }
    return look_up(high, range) - ((x * (z * odd + w * even) - look_up(low, range)) - x);
}

SORVO_INLINE FloatVec classic_atan2f(FloatVec y, FloatVec x) {
    const FloatVec a = magnitude_of(x);
    const FloatVec b = magnitude_of(y);
    // Above or below 0 the ratio is large, and the side does not matter; at the origin it is 0. A
    // denominator of 1 there would let a compiler divide by 0 and take the numerator afterwards.
    const MaskVec middle = a == 0.0F;
    const FloatVec numerator = middle ? where(b != 0.0F, 0x1p61F) : b;
    const FloatVec angle = classic_atanf(numerator / (middle ? broadcast(2.0F) : a));
    const MaskVec left = (ints_of(x) < 0) & (~middle | (b == 0.0F));
    const FloatVec turned =
        where(left, 3.1415927410e+00F) - (angle - where(left, -8.7422776573e-08F));
    const FloatVec result = with_sign_of(y, turned);
    const MaskVec special = ~((a < __builtin_inff()) & (b < __builtin_inff()));
    return any(special)
               ? replaced(result, special, [y, x](int lane) { return ::atan2f(y[lane], x[lane]); })
               : result;
}

template <MathForm form>
SORVO_INLINE FloatVec atan2f_of(FloatVec y, FloatVec x) {
    return form == MathForm::rounded ? rounded_atan2f(y, x) : classic_atan2f(y, x);
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
