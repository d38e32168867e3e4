// What 64-bit ARM does better by its own instructions than by what the compiler makes of the
// templates in vector.h, where each is described. Included by vector.h.
#pragma once

#include <arm_neon.h>

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {

SORVO_INLINE FloatVec broadcast(float value) {
    return reinterpret_cast<FloatVec>(vdupq_n_f32(value));
}

SORVO_INLINE FloatVec square_root(FloatVec value) {
    return reinterpret_cast<FloatVec>(vsqrtq_f32(reinterpret_cast<float32x4_t>(value)));
}

SORVO_INLINE DoubleVec square_root(DoubleVec value) {
    return reinterpret_cast<DoubleVec>(vsqrtq_f64(reinterpret_cast<float64x2_t>(value)));
}

SORVO_INLINE DoubleVec load_wide(const float* p) {
    return reinterpret_cast<DoubleVec>(vcvt_f64_f32(vld1_f32(p)));
}

SORVO_INLINE void store_rounded(float* p, DoubleVec value) {
    vst1_f32(p, vcvt_f32_f64(reinterpret_cast<float64x2_t>(value)));
}

SORVO_INLINE Wide widen(FloatVec x) {
    const auto all = reinterpret_cast<float32x4_t>(x);
    return {reinterpret_cast<DoubleVec>(vcvt_f64_f32(vget_low_f32(all))),
            reinterpret_cast<DoubleVec>(vcvt_high_f64_f32(all))};
}

SORVO_INLINE FloatVec narrow(Wide x) {
    return reinterpret_cast<FloatVec>(vcvt_high_f32_f64(
        vcvt_f32_f64(reinterpret_cast<float64x2_t>(x.low)), reinterpret_cast<float64x2_t>(x.high)));
}

SORVO_INLINE DoubleVec plus_product_somehow(DoubleVec a, DoubleVec b, DoubleVec c) {
    return reinterpret_cast<DoubleVec>(vfmaq_f64(reinterpret_cast<float64x2_t>(a),
                                                 reinterpret_cast<float64x2_t>(b),
                                                 reinterpret_cast<float64x2_t>(c)));
}

}  // namespace sorvo::audio::SORVO_LEVEL
