// Lanes of doubles: half as many as of floats, for kernels whose samples may be either.
#pragma once

#include "util/lanes.inl"

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"  // again in its own AVX-512 header
#endif

namespace sorvo::audio {
namespace {

constexpr std::size_t double_lane_n = lane_n / 2;

using DoublePack = double __attribute__((vector_size(8 * double_lane_n)));
// A typedef: in an alias declaration clang++ would leave the alignment out.
typedef double UnalignedDoublePack
    __attribute__((vector_size(8 * double_lane_n), aligned(8), may_alias));

#if defined(__AVX512F__)

using HalfPack = __m256;

SORVO_INLINE DoublePack widen(HalfPack value) {
    return _mm512_cvtps_pd(value);
}

SORVO_INLINE HalfPack narrow(DoublePack value) {
    return _mm512_cvtpd_ps(value);
}

SORVO_INLINE HalfPack load_half(const float* p) {
    return _mm256_loadu_ps(p);
}

SORVO_INLINE void store_half(float* p, HalfPack value) {
    _mm256_storeu_ps(p, value);
}

#elif defined(__AVX2__)

using HalfPack = __m128;

SORVO_INLINE DoublePack widen(HalfPack value) {
    return _mm256_cvtps_pd(value);
}

SORVO_INLINE HalfPack narrow(DoublePack value) {
    return _mm256_cvtpd_ps(value);
}

SORVO_INLINE HalfPack load_half(const float* p) {
    return _mm_loadu_ps(p);
}

SORVO_INLINE void store_half(float* p, HalfPack value) {
    _mm_storeu_ps(p, value);
}

#else

using HalfPack = __m128;  // of which the lower half counts

SORVO_INLINE DoublePack widen(HalfPack value) {
    return _mm_cvtps_pd(value);
}

SORVO_INLINE HalfPack narrow(DoublePack value) {
    return _mm_cvtpd_ps(value);
}

SORVO_INLINE HalfPack load_half(const float* p) {
    return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
}

SORVO_INLINE void store_half(float* p, HalfPack value) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_castps_si128(value));
}

#endif

SORVO_INLINE DoublePack load_wide(const double* p) {
    return *reinterpret_cast<const UnalignedDoublePack*>(p);
}

SORVO_INLINE DoublePack load_wide(const float* p) {
    return widen(load_half(p));
}

SORVO_INLINE void store_rounded(double* p, DoublePack value) {
    *reinterpret_cast<UnalignedDoublePack*>(p) = value;
}

SORVO_INLINE void store_rounded(float* p, DoublePack value) {
    store_half(p, narrow(value));
}

}  // namespace
}  // namespace sorvo::audio
