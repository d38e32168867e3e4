// Moving data between memory order and lanes.
#pragma once

#include "util/lanes.inl"

namespace sorvo::audio {
namespace {

// A quarter register holds four neighbouring floats. Transposing four packs within each quarter
// turns 4 x lane_n floats around, given that pack j is loaded from the columns j, j + 4, j + 8 ...
#if defined(__AVX512F__)

SORVO_INLINE Pack load_columns(const float* src, std::size_t hop_n) {
    __m512 pack = _mm512_castps128_ps512(_mm_loadu_ps(src));
    pack = _mm512_insertf32x4(pack, _mm_loadu_ps(src + 4 * hop_n), 1);
    pack = _mm512_insertf32x4(pack, _mm_loadu_ps(src + 8 * hop_n), 2);
    return _mm512_insertf32x4(pack, _mm_loadu_ps(src + 12 * hop_n), 3);
}

/// The same from starts[0], starts[4], ... on.
SORVO_INLINE Pack load_columns(const float* src, const std::uint32_t* starts) {
    __m512 pack = _mm512_castps128_ps512(_mm_loadu_ps(src + starts[0]));
    pack = _mm512_insertf32x4(pack, _mm_loadu_ps(src + starts[4]), 1);
    pack = _mm512_insertf32x4(pack, _mm_loadu_ps(src + starts[8]), 2);
    return _mm512_insertf32x4(pack, _mm_loadu_ps(src + starts[12]), 3);
}

SORVO_INLINE void transpose_quarters(Pack& a, Pack& b, Pack& c, Pack& d) {
    const __m512d ab_low = _mm512_castps_pd(_mm512_unpacklo_ps(a, b));
    const __m512d ab_high = _mm512_castps_pd(_mm512_unpackhi_ps(a, b));
    const __m512d cd_low = _mm512_castps_pd(_mm512_unpacklo_ps(c, d));
    const __m512d cd_high = _mm512_castps_pd(_mm512_unpackhi_ps(c, d));
    a = _mm512_castpd_ps(_mm512_unpacklo_pd(ab_low, cd_low));
    b = _mm512_castpd_ps(_mm512_unpackhi_pd(ab_low, cd_low));
    c = _mm512_castpd_ps(_mm512_unpacklo_pd(ab_high, cd_high));
    d = _mm512_castpd_ps(_mm512_unpackhi_pd(ab_high, cd_high));
}

SORVO_INLINE void store_columns(float* dst, std::size_t hop_n, Pack pack) {
    _mm_storeu_ps(dst, _mm512_castps512_ps128(pack));
    _mm_storeu_ps(dst + 4 * hop_n, _mm512_extractf32x4_ps(pack, 1));
    _mm_storeu_ps(dst + 8 * hop_n, _mm512_extractf32x4_ps(pack, 2));
    _mm_storeu_ps(dst + 12 * hop_n, _mm512_extractf32x4_ps(pack, 3));
}

using PackBits = __m512i;

SORVO_INLINE PackBits larger_magnitude(PackBits bits, Pack value) {
    const __m512i magnitude =
        _mm512_and_si512(_mm512_castps_si512(value), _mm512_set1_epi32(0x7fffffff));
    return _mm512_max_epi32(bits, magnitude);
}

SORVO_INLINE void store_interleaved(float* dst, Pack re, Pack im) {
    const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i high =
        _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    store(dst, _mm512_permutex2var_ps(re, low, im));
    store(dst + lane_n, _mm512_permutex2var_ps(re, high, im));
}

/// The first count of the pairs.
SORVO_INLINE void store_interleaved(float* dst, Pack re, Pack im, std::size_t count) {
    const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i high =
        _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    const std::uint64_t mask = (std::uint64_t{1} << (2 * count)) - 1;
    _mm512_mask_storeu_ps(dst, static_cast<__mmask16>(mask & 0xffffU),
                          _mm512_permutex2var_ps(re, low, im));
    _mm512_mask_storeu_ps(dst + lane_n, static_cast<__mmask16>(mask >> lane_n),
                          _mm512_permutex2var_ps(re, high, im));
}

SORVO_INLINE void separate(Pack& re, Pack& im, Pack low, Pack high) {
    const __m512i even =
        _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd =
        _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    re = _mm512_permutex2var_ps(low, even, high);
    im = _mm512_permutex2var_ps(low, odd, high);
}

SORVO_INLINE void store_with_zeros(float* dst, const float* src) {
    for (std::size_t half = 0; half < lane_n; half += 8) {
        const __m256i values = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + half));
        _mm512_storeu_si512(dst + 2 * half, _mm512_cvtepu32_epi64(values));
    }
}

SORVO_INLINE Pack smaller_magnitude(Pack a, Pack b) {
    return _mm512_range_ps(a, b, 0b1010);
}

SORVO_INLINE bool any_zero(Pack value) {
    return _mm512_cmp_ps_mask(value, Pack{}, _CMP_EQ_OQ) != 0;
}

#elif defined(__AVX2__)

SORVO_INLINE Pack load_columns(const float* src, std::size_t hop_n) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(src)),
                                _mm_loadu_ps(src + 4 * hop_n), 1);
}

SORVO_INLINE Pack load_columns(const float* src, const std::uint32_t* starts) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(src + starts[0])),
                                _mm_loadu_ps(src + starts[4]), 1);
}

SORVO_INLINE void transpose_quarters(Pack& a, Pack& b, Pack& c, Pack& d) {
    const __m256d ab_low = _mm256_castps_pd(_mm256_unpacklo_ps(a, b));
    const __m256d ab_high = _mm256_castps_pd(_mm256_unpackhi_ps(a, b));
    const __m256d cd_low = _mm256_castps_pd(_mm256_unpacklo_ps(c, d));
    const __m256d cd_high = _mm256_castps_pd(_mm256_unpackhi_ps(c, d));
    a = _mm256_castpd_ps(_mm256_unpacklo_pd(ab_low, cd_low));
    b = _mm256_castpd_ps(_mm256_unpackhi_pd(ab_low, cd_low));
    c = _mm256_castpd_ps(_mm256_unpacklo_pd(ab_high, cd_high));
    d = _mm256_castpd_ps(_mm256_unpackhi_pd(ab_high, cd_high));
}

SORVO_INLINE void store_columns(float* dst, std::size_t hop_n, Pack pack) {
    _mm_storeu_ps(dst, _mm256_castps256_ps128(pack));
    _mm_storeu_ps(dst + 4 * hop_n, _mm256_extractf128_ps(pack, 1));
}

using PackBits = __m256i;

SORVO_INLINE PackBits larger_magnitude(PackBits bits, Pack value) {
    const __m256i magnitude =
        _mm256_and_si256(_mm256_castps_si256(value), _mm256_set1_epi32(0x7fffffff));
    return _mm256_max_epi32(bits, magnitude);
}

SORVO_INLINE void store_interleaved(float* dst, Pack re, Pack im) {
    const __m256 low = _mm256_unpacklo_ps(re, im);
    const __m256 high = _mm256_unpackhi_ps(re, im);
    store(dst, _mm256_permute2f128_ps(low, high, 0x20));
    store(dst + lane_n, _mm256_permute2f128_ps(low, high, 0x31));
}

SORVO_INLINE void separate(Pack& re, Pack& im, Pack low, Pack high) {
    const __m256 first = _mm256_permute2f128_ps(low, high, 0x20);
    const __m256 second = _mm256_permute2f128_ps(low, high, 0x31);
    re = _mm256_shuffle_ps(first, second, 0x88);
    im = _mm256_shuffle_ps(first, second, 0xdd);
}

SORVO_INLINE void store_with_zeros(float* dst, const float* src) {
    store_interleaved(dst, load(src), Pack{});
}

SORVO_INLINE Pack smaller_magnitude(Pack a, Pack b) {
    const __m256 sign = _mm256_set1_ps(-0.0F);
    return _mm256_min_ps(_mm256_andnot_ps(sign, a), _mm256_andnot_ps(sign, b));
}

SORVO_INLINE bool any_zero(Pack value) {
    return _mm256_movemask_ps(_mm256_cmp_ps(value, Pack{}, _CMP_EQ_OQ)) != 0;
}

#else

SORVO_INLINE Pack load_columns(const float* src, std::size_t /*hop_n*/) {
    return _mm_loadu_ps(src);
}

SORVO_INLINE Pack load_columns(const float* src, const std::uint32_t* starts) {
    return _mm_loadu_ps(src + starts[0]);
}

SORVO_INLINE void transpose_quarters(Pack& a, Pack& b, Pack& c, Pack& d) {
    const __m128d ab_low = _mm_castps_pd(_mm_unpacklo_ps(a, b));
    const __m128d ab_high = _mm_castps_pd(_mm_unpackhi_ps(a, b));
    const __m128d cd_low = _mm_castps_pd(_mm_unpacklo_ps(c, d));
    const __m128d cd_high = _mm_castps_pd(_mm_unpackhi_ps(c, d));
    a = _mm_castpd_ps(_mm_unpacklo_pd(ab_low, cd_low));
    b = _mm_castpd_ps(_mm_unpackhi_pd(ab_low, cd_low));
    c = _mm_castpd_ps(_mm_unpacklo_pd(ab_high, cd_high));
    d = _mm_castpd_ps(_mm_unpackhi_pd(ab_high, cd_high));
}

SORVO_INLINE void store_columns(float* dst, std::size_t /*hop_n*/, Pack pack) {
    _mm_storeu_ps(dst, pack);
}

using PackBits = __m128i;

SORVO_INLINE PackBits larger_magnitude(PackBits bits, Pack value) {
    const __m128i magnitude = _mm_and_si128(_mm_castps_si128(value), _mm_set1_epi32(0x7fffffff));
    const __m128i larger = _mm_cmpgt_epi32(magnitude, bits);
    return _mm_or_si128(_mm_and_si128(larger, magnitude), _mm_andnot_si128(larger, bits));
}

SORVO_INLINE void store_interleaved(float* dst, Pack re, Pack im) {
    store(dst, _mm_unpacklo_ps(re, im));
    store(dst + lane_n, _mm_unpackhi_ps(re, im));
}

SORVO_INLINE void separate(Pack& re, Pack& im, Pack low, Pack high) {
    re = _mm_shuffle_ps(low, high, 0x88);
    im = _mm_shuffle_ps(low, high, 0xdd);
}

SORVO_INLINE void store_with_zeros(float* dst, const float* src) {
    store_interleaved(dst, load(src), Pack{});
}

SORVO_INLINE Pack smaller_magnitude(Pack a, Pack b) {
    const __m128 sign = _mm_set1_ps(-0.0F);
    return _mm_min_ps(_mm_andnot_ps(sign, a), _mm_andnot_ps(sign, b));
}

SORVO_INLINE bool any_zero(Pack value) {
    return _mm_movemask_ps(_mm_cmpeq_ps(value, Pack{})) != 0;
}

#endif

#if !defined(__AVX512F__)

SORVO_INLINE void store_interleaved(float* dst, Pack re, Pack im, std::size_t count) {
    float values[2 * lane_n];
    store_interleaved(values, re, im);
    for (std::size_t i = 0; i < 2 * count; ++i) {
        dst[i] = values[i];
    }
}

#endif

SORVO_INLINE void store_separated(float* re, float* im, Pack low, Pack high) {
    Pack even;
    Pack odd;
    separate(even, odd, low, high);
    store(re, even);
    store(im, odd);
}

/// The largest magnitude seen, as bits: so NaN is above infinity.
class Magnitude {
  public:
    void see(Pack value) { packs_ = larger_magnitude(packs_, value); }

    void see(float value) {
        std::uint32_t bits = 0;
        __builtin_memcpy(&bits, &value, sizeof bits);
        bits &= 0x7fffffffU;
        bits_ = bits > bits_ ? bits : bits_;
    }

    std::uint32_t bits() const {
        std::uint32_t lanes[lane_n];
        __builtin_memcpy(lanes, &packs_, sizeof lanes);
        std::uint32_t largest = bits_;
        for (const std::uint32_t lane : lanes) {
            largest = lane > largest ? lane : largest;
        }
        return largest;
    }

  private:
    PackBits packs_ = {};
    std::uint32_t bits_ = 0;
};

/// Rows are far apart, so that no hardware prefetcher foresees the next: asks for one further on.
template <bool to_write>
SORVO_INLINE void prefetch_row(const float* row, std::size_t row_step, std::size_t n) {
    constexpr std::size_t ahead = 12;
    constexpr std::size_t line = 16;
    for (std::size_t i = 0; i < n + line; i += line) {
        __builtin_prefetch(row + ahead * row_step + i, to_write ? 1 : 0);
    }
}

}  // namespace
}  // namespace sorvo::audio
