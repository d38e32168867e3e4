// powf(x, 0.5f) of a pack.
//
// powf(x, 0.5f) is the correctly rounded root save where the root lies within 0.0016 units in the
// last place of the midpoint of two floats. Near a midpoint the remainder x - s s of the rounded
// root s is close to s ulp(s), its bound. So s is right where the remainder is clearly below that,
// however s came about; everywhere else powf is asked.
#pragma once

#include "util/lanes.inl"

extern "C" float powf(float, float);

namespace sorvo::audio {
namespace {

/// A root, and one bit for each lane in which it may be wrong. Zeros have a root of 0; what is so
/// small that the remainder could underflow, and what is not a finite positive number, is in doubt.
struct Root {
    Pack value;
    unsigned doubt;
};

constexpr float smallest_certain = 1e-30F;

#if defined(__AVX512F__)

SORVO_INLINE Root find_root(Pack x) {
    const __m512 positive = x + Pack{};  // powf has +0 for -0
    const __m512 s = _mm512_sqrt_ps(positive);
    const __m512 remainder = _mm512_abs_ps(_mm512_fnmadd_ps(s, s, positive));
    const __m512 binade = _mm512_and_ps(s, _mm512_castsi512_ps(_mm512_set1_epi32(0x7f800000)));
    const __m512 bound = s * (binade * broadcast(0.996F * 0x1p-23F));
    // One less makes 0 the largest of all: its remainder decides.
    const __m512i one = _mm512_set1_epi32(1);
    const __m512i bits = _mm512_sub_epi32(_mm512_castps_si512(positive), one);
    const __m512i least = _mm512_sub_epi32(_mm512_castps_si512(broadcast(smallest_certain)), one);
    const __mmask16 decided =
        _mm512_mask_cmpge_epu32_mask(_mm512_cmp_ps_mask(remainder, bound, _CMP_LE_OQ), bits, least);
    return {s, 0xffffU & ~unsigned{decided}};
}

#else

SORVO_INLINE unsigned lane_bits(Pack mask) {
#if defined(__AVX2__)
    return static_cast<unsigned>(_mm256_movemask_ps(mask));
#else
    return static_cast<unsigned>(_mm_movemask_ps(mask));
#endif
}

using Bits = std::uint32_t __attribute__((vector_size(4 * lane_n)));

SORVO_INLINE Pack select(Pack value, std::uint32_t mask) {
    return reinterpret_cast<Pack>(reinterpret_cast<Bits>(value) & mask);
}

SORVO_INLINE Root find_root(Pack x) {
#if defined(__AVX2__)
    const Pack s = _mm256_sqrt_ps(x);
#else
    const Pack s = _mm_sqrt_ps(x);
#endif
    // `high` is half of the bits of s: its square is exact, and so is the first difference.
    const Pack high = select(s, 0xFFFFF000U);
    const Pack low = s - high;
    const Pack remainder = ((x - high * high) - 2.0F * high * low) - low * low;
    const Pack bound = s * (select(s, 0x7F800000U) * (0.99F * 0x1p-23F));
    const Pack zero = reinterpret_cast<Pack>(x == Pack{});
    const auto decided =
        (select(remainder, 0x7FFFFFFFU) <= bound) & (x >= broadcast(smallest_certain));
    constexpr unsigned all = (1U << lane_n) - 1;
    return {reinterpret_cast<Pack>(~reinterpret_cast<Bits>(zero) & reinterpret_cast<Bits>(s)),
            all & ~(lane_bits(reinterpret_cast<Pack>(decided)) | lane_bits(zero))};
}

#endif

/// Asks powf for the lanes of x that are in doubt: their roots go to dst[lane * step].
[[gnu::noinline, gnu::cold]] void ask_for_roots(float* dst, std::size_t step, Pack x,
                                                unsigned doubt) {
    float asked[lane_n];
    store(asked, x);
    for (; doubt != 0; doubt &= doubt - 1) {
        const auto lane = static_cast<std::size_t>(__builtin_ctz(doubt));
        dst[lane * step] = ::powf(asked[lane], 0.5F);
    }
}

}  // namespace
}  // namespace sorvo::audio
