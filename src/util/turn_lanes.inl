// Between lanes of successive samples in memory and rows of one sample of every lane.
#pragma once

#include "util/lanes.inl"

namespace sorvo::audio {
namespace {

constexpr std::size_t cache_line_n = 64;

/// Asks for the cache line of an address; whether anything is there does not matter. In a function
/// that is not inlined, g++ takes this for no effect and drops the call.
SORVO_INLINE void prefetch(std::uintptr_t address) {
    __builtin_prefetch(reinterpret_cast<const void*>(address));
}

#if defined(__AVX2__)

/// Elements along one side of the squares that transpose_square() moves.
template <class T>
constexpr std::size_t square_n = 32 / sizeof(T);

/// dst[i * dst_stride + j] = src[j * src_stride + i] for i and j below square_n.
SORVO_INLINE void transpose_square(float* dst, std::ptrdiff_t dst_stride, const float* src,
                                   std::ptrdiff_t src_stride) {
    __m256 a[8];
    for (std::ptrdiff_t i = 0; i < 8; i += 2) {
        const __m256 x = _mm256_loadu_ps(src + i * src_stride);
        const __m256 y = _mm256_loadu_ps(src + (i + 1) * src_stride);
        a[i] = _mm256_unpacklo_ps(x, y);
        a[i + 1] = _mm256_unpackhi_ps(x, y);
    }
    __m256 b[8];
    for (std::ptrdiff_t i = 0; i < 8; i += 4) {
        b[i] = _mm256_shuffle_ps(a[i], a[i + 2], 0x44);
        b[i + 1] = _mm256_shuffle_ps(a[i], a[i + 2], 0xee);
        b[i + 2] = _mm256_shuffle_ps(a[i + 1], a[i + 3], 0x44);
        b[i + 3] = _mm256_shuffle_ps(a[i + 1], a[i + 3], 0xee);
    }
    for (std::ptrdiff_t i = 0; i < 4; ++i) {
        _mm256_storeu_ps(dst + i * dst_stride, _mm256_permute2f128_ps(b[i], b[i + 4], 0x20));
        _mm256_storeu_ps(dst + (i + 4) * dst_stride, _mm256_permute2f128_ps(b[i], b[i + 4], 0x31));
    }
}

SORVO_INLINE void transpose_square(double* dst, std::ptrdiff_t dst_stride, const double* src,
                                   std::ptrdiff_t src_stride) {
    __m256d a[4];
    for (std::ptrdiff_t i = 0; i < 4; i += 2) {
        const __m256d x = _mm256_loadu_pd(src + i * src_stride);
        const __m256d y = _mm256_loadu_pd(src + (i + 1) * src_stride);
        a[i] = _mm256_unpacklo_pd(x, y);
        a[i + 1] = _mm256_unpackhi_pd(x, y);
    }
    for (std::ptrdiff_t i = 0; i < 2; ++i) {
        _mm256_storeu_pd(dst + i * dst_stride, _mm256_permute2f128_pd(a[i], a[i + 2], 0x20));
        _mm256_storeu_pd(dst + (i + 2) * dst_stride, _mm256_permute2f128_pd(a[i], a[i + 2], 0x31));
    }
}

#else

template <class T>
constexpr std::size_t square_n = 16 / sizeof(T);

SORVO_INLINE void transpose_square(float* dst, std::ptrdiff_t dst_stride, const float* src,
                                   std::ptrdiff_t src_stride) {
    __m128 row[4];
    for (std::ptrdiff_t i = 0; i < 4; ++i) {
        row[i] = _mm_loadu_ps(src + i * src_stride);
    }
    _MM_TRANSPOSE4_PS(row[0], row[1], row[2], row[3]);
    for (std::ptrdiff_t i = 0; i < 4; ++i) {
        _mm_storeu_ps(dst + i * dst_stride, row[i]);
    }
}

SORVO_INLINE void transpose_square(double* dst, std::ptrdiff_t dst_stride, const double* src,
                                   std::ptrdiff_t src_stride) {
    const __m128d x = _mm_loadu_pd(src);
    const __m128d y = _mm_loadu_pd(src + src_stride);
    _mm_storeu_pd(dst, _mm_unpacklo_pd(x, y));
    _mm_storeu_pd(dst + dst_stride, _mm_unpackhi_pd(x, y));
}

#endif

}  // namespace
}  // namespace sorvo::audio
