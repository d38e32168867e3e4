// Between floats and doubles: a vector of floats is as many doubles as two vectors hold.
#pragma once

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {

/// Signed numbers rather than masks.
using IntVec = MaskVec;

/// The lower and the upper lanes of a vector of floats.
struct Wide {
    DoubleVec low;
    DoubleVec high;
};

/// The number in all lanes.
SORVO_INLINE DoubleVec broadcast_double(double value) {
    return value - DoubleVec{};
}

#if defined(__AVX512F__)

SORVO_INLINE Wide widen(FloatVec x) {
    return {_mm512_cvtps_pd(_mm512_castps512_ps256(x)),
            _mm512_cvtps_pd(_mm512_extractf32x8_ps(x, 1))};
}

SORVO_INLINE Wide widen(IntVec x) {
    const auto all = reinterpret_cast<__m512i>(x);
    return {_mm512_cvtepi32_pd(_mm512_castsi512_si256(all)),
            _mm512_cvtepi32_pd(_mm512_extracti32x8_epi32(all, 1))};
}

SORVO_INLINE FloatVec narrow(Wide x) {
    return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(x.low)),
                              _mm512_cvtpd_ps(x.high), 1);
}

#elif defined(__AVX2__)

SORVO_INLINE Wide widen(FloatVec x) {
    return {_mm256_cvtps_pd(_mm256_castps256_ps128(x)),
            _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1))};
}

SORVO_INLINE Wide widen(IntVec x) {
    const auto all = reinterpret_cast<__m256i>(x);
    return {_mm256_cvtepi32_pd(_mm256_castsi256_si128(all)),
            _mm256_cvtepi32_pd(_mm256_extracti128_si256(all, 1))};
}

SORVO_INLINE FloatVec narrow(Wide x) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(x.low)),
                                _mm256_cvtpd_ps(x.high), 1);
}

#else

static_assert(lane_n == 4);

template <class V>
SORVO_INLINE Wide widen(V x) {
    return {__builtin_convertvector(__builtin_shufflevector(x, x, 0, 1), DoubleVec),
            __builtin_convertvector(__builtin_shufflevector(x, x, 2, 3), DoubleVec)};
}

/// Each double rounded to a float.
SORVO_INLINE FloatVec narrow(Wide x) {
    using Half = Vec<float, double_lane_n>;
    return __builtin_shufflevector(__builtin_convertvector(x.low, Half),
                                   __builtin_convertvector(x.high, Half), 0, 1, 2, 3);
}

#endif

/// a + b c, rounded once or twice, whichever is faster: for what is proved not to depend on it.
SORVO_INLINE DoubleVec plus_product_somehow(DoubleVec a, DoubleVec b, DoubleVec c) {
#if defined(__AVX512F__)
    return _mm512_fmadd_pd(b, c, a);
#elif defined(__FMA__)
    return _mm256_fmadd_pd(b, c, a);
#elif defined(__aarch64__)
    return reinterpret_cast<DoubleVec>(vfmaq_f64(reinterpret_cast<float64x2_t>(a),
                                                 reinterpret_cast<float64x2_t>(b),
                                                 reinterpret_cast<float64x2_t>(c)));
#else
    return a + b * c;
#endif
}

}  // namespace sorvo::audio::SORVO_LEVEL
