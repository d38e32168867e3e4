// What x86-64 does better by its own instructions than by what the compiler makes of the templates
// in vector.h and shuffle.h, where each is described. Included by vector.h.
#pragma once

#include <immintrin.h>

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {

#if defined(__AVX512F__)

SORVO_INLINE FloatVec broadcast(float value) {
    return _mm512_set1_ps(value);
}

SORVO_INLINE FloatVec square_root(FloatVec value) {
    return _mm512_sqrt_ps(value);
}

SORVO_INLINE DoubleVec square_root(DoubleVec value) {
    return _mm512_sqrt_pd(value);
}

SORVO_INLINE FloatVec minus_product(FloatVec a, FloatVec b, FloatVec c) {
    return _mm512_fnmadd_ps(b, c, a);
}

SORVO_INLINE unsigned replace_unless_below(FloatVec& value, FloatVec replacement, FloatVec a,
                                           FloatVec limit, FloatVec x) {
    const __m512i bits = _mm512_castps_si512(x);
    const __mmask16 replaced =
        _mm512_mask_cmp_ps_mask(_mm512_test_epi32_mask(bits, bits), a, limit, _CMP_NLE_UQ);
    value = _mm512_mask_mov_ps(value, replaced, replacement);
    return replaced;
}

SORVO_INLINE unsigned lane_bits(MaskVec mask) {
    return _mm512_movepi32_mask(reinterpret_cast<__m512i>(mask));
}

SORVO_INLINE unsigned lane_bits(LongMaskVec mask) {
    return _mm512_movepi64_mask(reinterpret_cast<__m512i>(mask));
}

SORVO_INLINE DoubleVec load_wide(const float* p) {
    return _mm512_cvtps_pd(_mm256_loadu_ps(p));
}

SORVO_INLINE void store_rounded(float* p, DoubleVec value) {
    _mm256_storeu_ps(p, _mm512_cvtpd_ps(value));
}

template <>
SORVO_INLINE DoubleVec rounded_to<float>(DoubleVec value) {
    return _mm512_cvtps_pd(_mm512_cvtpd_ps(value));
}

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

SORVO_INLINE DoubleVec plus_product_somehow(DoubleVec a, DoubleVec b, DoubleVec c) {
    return _mm512_fmadd_pd(b, c, a);
}

// g++ joins quarters by shuffles of registers; these are loads.
SORVO_INLINE FloatVec load_quarters(const float* p, std::size_t step) {
    __m512 quarters = _mm512_castps128_ps512(_mm_loadu_ps(p));
    quarters = _mm512_insertf32x4(quarters, _mm_loadu_ps(p + step), 1);
    quarters = _mm512_insertf32x4(quarters, _mm_loadu_ps(p + 2 * step), 2);
    return _mm512_insertf32x4(quarters, _mm_loadu_ps(p + 3 * step), 3);
}

SORVO_INLINE FloatVec load_quarters(const float* p, const std::uint32_t* offsets) {
    __m512 quarters = _mm512_castps128_ps512(_mm_loadu_ps(p + offsets[0]));
    quarters = _mm512_insertf32x4(quarters, _mm_loadu_ps(p + offsets[4]), 1);
    quarters = _mm512_insertf32x4(quarters, _mm_loadu_ps(p + offsets[8]), 2);
    return _mm512_insertf32x4(quarters, _mm_loadu_ps(p + offsets[12]), 3);
}

SORVO_INLINE FloatVec permute(FloatVec x, BitsVec order) {
    return _mm512_permutexvar_ps(reinterpret_cast<__m512i>(order), x);
}

SORVO_INLINE void store_first(float* dst, FloatVec low, FloatVec high, std::size_t count) {
    const std::uint64_t mask = (std::uint64_t{1} << count) - 1;
    _mm512_mask_storeu_ps(dst, static_cast<__mmask16>(mask & 0xFFFFU), low);
    _mm512_mask_storeu_ps(dst + lane_n, static_cast<__mmask16>(mask >> lane_n), high);
}

#elif defined(__AVX2__)

SORVO_INLINE FloatVec broadcast(float value) {
    return _mm256_set1_ps(value);
}

SORVO_INLINE FloatVec square_root(FloatVec value) {
    return _mm256_sqrt_ps(value);
}

SORVO_INLINE DoubleVec square_root(DoubleVec value) {
    return _mm256_sqrt_pd(value);
}

SORVO_INLINE FloatVec minus_product(FloatVec a, FloatVec b, FloatVec c) {
    return _mm256_fnmadd_ps(b, c, a);
}

SORVO_INLINE unsigned lane_bits(MaskVec mask) {
    return static_cast<unsigned>(_mm256_movemask_ps(reinterpret_cast<__m256>(mask)));
}

SORVO_INLINE unsigned lane_bits(LongMaskVec mask) {
    return static_cast<unsigned>(_mm256_movemask_pd(reinterpret_cast<__m256d>(mask)));
}

SORVO_INLINE DoubleVec load_wide(const float* p) {
    return _mm256_cvtps_pd(_mm_loadu_ps(p));
}

SORVO_INLINE void store_rounded(float* p, DoubleVec value) {
    _mm_storeu_ps(p, _mm256_cvtpd_ps(value));
}

template <>
SORVO_INLINE DoubleVec rounded_to<float>(DoubleVec value) {
    return _mm256_cvtps_pd(_mm256_cvtpd_ps(value));
}

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

SORVO_INLINE DoubleVec plus_product_somehow(DoubleVec a, DoubleVec b, DoubleVec c) {
    return _mm256_fmadd_pd(b, c, a);
}

SORVO_INLINE FloatVec permute(FloatVec x, BitsVec order) {
    return _mm256_permutevar8x32_ps(x, reinterpret_cast<__m256i>(order));
}

#else

SORVO_INLINE FloatVec broadcast(float value) {
    return _mm_set1_ps(value);
}

SORVO_INLINE FloatVec square_root(FloatVec value) {
    return _mm_sqrt_ps(value);
}

SORVO_INLINE DoubleVec square_root(DoubleVec value) {
    return _mm_sqrt_pd(value);
}

SORVO_INLINE unsigned lane_bits(MaskVec mask) {
    return static_cast<unsigned>(_mm_movemask_ps(reinterpret_cast<__m128>(mask)));
}

SORVO_INLINE unsigned lane_bits(LongMaskVec mask) {
    return static_cast<unsigned>(_mm_movemask_pd(reinterpret_cast<__m128d>(mask)));
}

SORVO_INLINE DoubleVec load_wide(const float* p) {
    return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
}

SORVO_INLINE void store_rounded(float* p, DoubleVec value) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_castps_si128(_mm_cvtpd_ps(value)));
}

template <>
SORVO_INLINE DoubleVec rounded_to<float>(DoubleVec value) {
    return _mm_cvtps_pd(_mm_cvtpd_ps(value));
}

SORVO_INLINE Wide widen(FloatVec x) {
    return {_mm_cvtps_pd(x), _mm_cvtps_pd(_mm_movehl_ps(x, x))};
}

SORVO_INLINE Wide widen(IntVec x) {
    const auto all = reinterpret_cast<__m128i>(x);
    return {_mm_cvtepi32_pd(all), _mm_cvtepi32_pd(_mm_unpackhi_epi64(all, all))};
}

SORVO_INLINE FloatVec narrow(Wide x) {
    return _mm_movelh_ps(_mm_cvtpd_ps(x.low), _mm_cvtpd_ps(x.high));
}

#endif

}  // namespace sorvo::audio::SORVO_LEVEL
