// powf(x, 0.5f) of a pack.
//
// powf(x, 0.5f) is the correctly rounded root save where the root lies within 0.0016 units in the
// last place of the midpoint of two floats. Near a midpoint the remainder x - s s of the rounded
// root s is close to s ulp(s), its bound. So s is right where the remainder is clearly below that,
// however s came about; everywhere else powf is asked.
#pragma once

#include "util/lanes.inl"

namespace sorvo::audio {
namespace {

/// A root, and one bit for each lane in which it may be wrong: there the value is not the root but
/// x with a sign. Zeros have a root of 0; what is so small that the remainder could underflow, and
/// what is not a finite positive number, is in doubt.
struct Root {
    Pack value;
    unsigned doubt;
};

/// The part of the bound within which the root is right: the less, the less exact the remainder is.
#if defined(__FMA__)
constexpr float certain = 0.9967F;
#else
constexpr float certain = 0.996F;
#endif

constexpr float underflow = 1e-37F;  // taken off the bound, leaves nothing where x is below 1e-30

#if defined(__AVX512F__)

SORVO_INLINE Root find_root(Pack x) {
    const __m512 s = _mm512_sqrt_ps(x);
    const __m512 remainder = _mm512_abs_ps(_mm512_fnmadd_ps(s, s, x));
    const __m512 binade = _mm512_and_ps(s, _mm512_castsi512_ps(_mm512_set1_epi32(0x7f800000)));
    const __m512 bound =
        _mm512_fmadd_ps(s, binade * broadcast(certain * 0x1p-23F), broadcast(-underflow));
    const __m512i bits = _mm512_castps_si512(x);
    const __mmask16 doubt =
        _mm512_mask_cmp_ps_mask(_mm512_test_epi32_mask(bits, bits), remainder, bound, _CMP_NLE_UQ);
    return {_mm512_mask_or_ps(s, doubt, x, broadcast(-0.0F)), doubt};
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

SORVO_INLINE Bits bits_of(Pack value) {
    return reinterpret_cast<Bits>(value);
}

SORVO_INLINE Pack select(Pack value, std::uint32_t mask) {
    return reinterpret_cast<Pack>(bits_of(value) & mask);
}

SORVO_INLINE Root find_root(Pack x) {
#if defined(__AVX2__)
    const Pack s = _mm256_sqrt_ps(x);
    const Pack remainder = _mm256_fnmadd_ps(s, s, x);
#else
    const Pack s = _mm_sqrt_ps(x);
    // `high` is half of the bits of s: its square is exact, and so is the first difference.
    const Pack high = select(s, 0xFFFFF000U);
    const Pack low = s - high;
    const Pack remainder = ((x - high * high) - 2.0F * high * low) - low * low;
#endif
    const Pack bound = s * (select(s, 0x7F800000U) * (certain * 0x1p-23F)) - underflow;
    const auto decided = reinterpret_cast<Bits>(select(remainder, 0x7FFFFFFFU) <= bound);
    const auto doubt = ~decided & reinterpret_cast<Bits>(x != Pack{});
    const Bits value = (decided & bits_of(s)) | (doubt & (bits_of(x) | 0x80000000U));
    return {reinterpret_cast<Pack>(value), lane_bits(reinterpret_cast<Pack>(doubt))};
}

#endif

}  // namespace
}  // namespace sorvo::audio
