// The kernel of root_kernels.h for the level of the including translation unit.
//
// powf(x, 0.5f) is the correctly rounded root save where the root lies within 0.0016 units in the
// last place of the midpoint of two floats. Near a midpoint the remainder x - s s of the rounded
// root s is close to s ulp(s), its bound. So s is right where the remainder is clearly below that,
// however s came about; everywhere else powf is asked.
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

constexpr float smallest = 1e-30F;

#if defined(__AVX512F__)

SORVO_INLINE Root find_root(Pack x) {
    // One step of Newton's method from 14 bits, then the remainder: quicker than a root
    // instruction.
    const __m512 r = _mm512_rsqrt14_ps(x);
    const __m512 half_r = r * broadcast(0.5F);
    const __m512 g = x * r;
    const __m512 step = _mm512_fnmadd_ps(g, half_r, broadcast(0.5F));
    const __m512 g1 = _mm512_fmadd_ps(g, step, g);
    const __m512 h1 = _mm512_fmadd_ps(half_r, step, half_r);
    const __m512 s = _mm512_fmadd_ps(_mm512_fnmadd_ps(g1, g1, x), h1, g1);

    const __m512 remainder = _mm512_abs_ps(_mm512_fnmadd_ps(s, s, x));
    const __m512 binade = _mm512_and_ps(s, _mm512_castsi512_ps(_mm512_set1_epi32(0x7f800000)));
    const __m512 bound = s * (binade * broadcast(0.996F * 0x1p-23F));
    const __mmask16 decided = _mm512_cmp_ps_mask(remainder, bound, _CMP_LE_OQ) &
                              _mm512_cmp_ps_mask(x, broadcast(smallest), _CMP_GE_OQ);
    const __mmask16 zero = _mm512_cmp_ps_mask(x, Pack{}, _CMP_EQ_OQ);
    return {_mm512_mask_mov_ps(s, zero, Pack{}), 0xffffU & ~(unsigned{decided} | unsigned{zero})};
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
    const auto decided = (select(remainder, 0x7FFFFFFFU) <= bound) & (x >= broadcast(smallest));
    constexpr unsigned all = (1U << lane_n) - 1;
    return {reinterpret_cast<Pack>(~reinterpret_cast<Bits>(zero) & reinterpret_cast<Bits>(s)),
            all & ~(lane_bits(reinterpret_cast<Pack>(decided)) | lane_bits(zero))};
}

#endif

void take_roots(float* dst, const float* src, std::size_t n) {
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        const Pack x = load(src + i);
        const Root root = find_root(x);
        store(dst + i, root.value);
        if (root.doubt != 0) {
            float asked[lane_n];
            store(asked, x);
            for (unsigned lanes = root.doubt; lanes != 0; lanes &= lanes - 1) {
                const auto lane = static_cast<std::size_t>(__builtin_ctz(lanes));
                dst[i + lane] = ::powf(asked[lane], 0.5F);
            }
        }
    }
    for (; i < n; ++i) {
        dst[i] = ::powf(src[i], 0.5F);
    }
}

}  // namespace
}  // namespace sorvo::audio
