// sinf and cosf in lanes, for magnitudes below 16.
//
// The steps are those of glibc since 2.28, whose constants come from Arm Optimized Routines (MIT
// licence): after the nearest multiple of pi/2 is taken off, a polynomial in double for each
// function. The results are not always the nearest floats. Fused or not, they are the same for
// every float below 16.
#pragma once

#include "math/lanes.h"
#include "simd/complex.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

struct SineAndCosine {
    DoubleVec sine;
    DoubleVec cosine;
};

SORVO_INLINE SineAndCosine sine_and_cosine(DoubleVec angle) {
    const auto bits_of = [](DoubleVec value)
                             SORVO_INLINE_BODY { return reinterpret_cast<LongMaskVec>(value); };
    // Added to 1.5 2^52 the number of quarter turns is rounded, and stands in the lowest bits.
    const DoubleVec shifted = angle * 0x1.45f306dc9c883p-1 + 0x1.8p52;
    const LongMaskVec quarters = bits_of(shifted);
    const DoubleVec x = angle - (shifted - 0x1.8p52) * 0x1.921fb54442d18p0;
    const DoubleVec x2 = x * x;
    const DoubleVec x3 = x * x2;
    const DoubleVec x4 = x2 * x2;
    const auto sum = [](DoubleVec a, DoubleVec b, double c) SORVO_INLINE_BODY {
        return plus_product_somehow(a, b, broadcast_double(c));
    };
    const DoubleVec sine_low =
        sum(broadcast_double(0x1.1107605230bc4p-7), x2, -0x1.994eb3774cf24p-13);
    const DoubleVec sine =
        plus_product_somehow(sum(x, x3, -0x1.555545995a603p-3), x3 * x2, sine_low);
    const DoubleVec cosine_low =
        sum(broadcast_double(-0x1.6c087e89a359dp-10), x2, 0x1.99343027bf8c3p-16);
    const DoubleVec cosine_high = sum(broadcast_double(1.0), x2, -0x1.ffffffd0c621cp-2);
    const DoubleVec cosine =
        plus_product_somehow(sum(cosine_high, x4, 0x1.55553e1068f19p-5), x4 * x2, cosine_low);
    // An odd number of quarter turns exchanges them; the second bit is a sign.
    using Bits = Vec<std::uint64_t, double_lane_n>;
    const auto sign = [](LongMaskVec count) SORVO_INLINE_BODY {
        return reinterpret_cast<LongMaskVec>((reinterpret_cast<Bits>(count) >> 1) << 63);
    };
    const LongMaskVec exchange = (bits_of(sine) ^ bits_of(cosine)) & -(quarters & 1);
    return {reinterpret_cast<DoubleVec>(bits_of(sine) ^ exchange ^ sign(quarters)),
            reinterpret_cast<DoubleVec>(bits_of(cosine) ^ exchange ^ sign(quarters + 1))};
}

/// cosf(angle) + i sinf(angle).
SORVO_INLINE ComplexVec unit_number(FloatVec angle) {
    const Wide wide = widen(angle);
    const SineAndCosine low = sine_and_cosine(wide.low);
    const SineAndCosine high = sine_and_cosine(wide.high);
    const FloatVec sine = narrow({low.sine, high.sine});
    return {narrow({low.cosine, high.cosine}),
            magnitude_of(angle) < 0x1p-12F ? angle : sine};  // for -0
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
