// A pack of lanes: as many floats as a register of the level holds for which the including
// translation unit is compiled. Everything here and in the kernels is in an anonymous namespace and
// uses no inline code of other headers: a function compiled for one level must never be the one
// that the linker keeps for all.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"  // g++ 12 means its own AVX-512 header
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

#define SORVO_INLINE [[gnu::always_inline]] inline
#define SORVO_INLINE_BODY __attribute__((always_inline))  // of a lambda

namespace sorvo::audio {
namespace {

#if defined(__AVX512F__)
constexpr std::size_t lane_n = 16;
#elif defined(__AVX2__)
constexpr std::size_t lane_n = 8;
#else
constexpr std::size_t lane_n = 4;
#endif

using Pack = float __attribute__((vector_size(4 * lane_n)));
// A typedef: in an alias declaration clang++ would leave the alignment out.
typedef float UnalignedPack __attribute__((vector_size(4 * lane_n), aligned(4), may_alias));
static_assert(alignof(UnalignedPack) == alignof(float));

SORVO_INLINE Pack load(const float* p) {
    return *reinterpret_cast<const UnalignedPack*>(p);
}

SORVO_INLINE void store(float* p, Pack value) {
    *reinterpret_cast<UnalignedPack*>(p) = value;
}

SORVO_INLINE Pack broadcast(float value) {
#if defined(__AVX512F__)
    return _mm512_set1_ps(value);
#elif defined(__AVX2__)
    return _mm256_set1_ps(value);
#else
    return _mm_set1_ps(value);
#endif
}

/// The complex values of one element in all lanes.
struct Complex {
    Pack re;
    Pack im;
};

SORVO_INLINE Complex load(const Pack* x, std::size_t j) {
    return {x[2 * j], x[2 * j + 1]};
}

SORVO_INLINE void store(Pack* x, std::size_t j, Complex value) {
    x[2 * j] = value.re;
    x[2 * j + 1] = value.im;
}

SORVO_INLINE Complex operator+(Complex a, Complex b) {
    return {a.re + b.re, a.im + b.im};
}

SORVO_INLINE Complex operator-(Complex a, Complex b) {
    return {a.re - b.re, a.im - b.im};
}

/// t times the twiddle w = (c, s).
SORVO_INLINE Complex multiply(Complex t, const float* w) {
    return {w[0] * t.re - w[1] * t.im, w[0] * t.im + w[1] * t.re};
}

}  // namespace
}  // namespace sorvo::audio
