// The vector types of a level and their arithmetic, by the compiler's vector extensions: +, -, *,
// /, < and the like work lane by lane. What a processor does better is in a header of its own
// (simd/x86.h), as functions that take precedence over the templates here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/inline.h"
#include "util/numeric_contract.h"

// Vectors pass only between functions that are inlined into one another: how a call would pass them
// does not matter.
#pragma GCC diagnostic ignored "-Wpsabi"
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"  // g++ 12 means its own AVX-512 header
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

namespace sorvo::audio::SORVO_LEVEL {

/// Floats of a vector.
#if defined(__AVX512F__)
constexpr std::size_t lane_n = 16;
#elif defined(__AVX2__)
constexpr std::size_t lane_n = 8;
#else
constexpr std::size_t lane_n = 4;
#endif
constexpr std::size_t double_lane_n = lane_n / 2;

template <class T, std::size_t n>
struct VectorOf {
    using type __attribute__((vector_size(n * sizeof(T)))) = T;
};
template <class T, std::size_t n>
using Vec = typename VectorOf<T, n>::type;

using FloatVec = Vec<float, lane_n>;
using BitsVec = Vec<std::uint32_t, lane_n>;
using MaskVec =
    Vec<std::int32_t, lane_n>;  ///< what comparing FloatVecs gives: -1 or 0 in each lane
using IntVec = MaskVec;         ///< signed numbers rather than masks
using DoubleVec = Vec<double, double_lane_n>;
using LongMaskVec = Vec<std::int64_t, double_lane_n>;  ///< the same for DoubleVecs

/// As many doubles as a FloatVec has lanes: the lower and the upper ones.
struct Wide {
    DoubleVec low;
    DoubleVec high;
};

/// The lanes of a vector type.
template <class V>
constexpr std::size_t lanes_of = sizeof(V) / sizeof(V{}[0]);

/// The same in memory, where it need not be aligned.
template <class V>
struct Unaligned {
    typedef V type
        __attribute__((aligned(1), may_alias));  // in an alias clang++ would leave them out
};

template <class V = FloatVec, class T>
SORVO_INLINE V load(const T* p) {
    return *reinterpret_cast<const typename Unaligned<V>::type*>(p);
}

template <class V, class T>
SORVO_INLINE void store(T* p, V value) {
    *reinterpret_cast<typename Unaligned<V>::type*>(p) = value;
}

template <class T>
SORVO_INLINE FloatVec broadcast(T value) {
    FloatVec result;
    for (std::size_t i = 0; i < lane_n; ++i) {
        result[i] = value;
    }
    return result;
}

SORVO_INLINE BitsVec bits_of(FloatVec value) {
    return reinterpret_cast<BitsVec>(value);
}

SORVO_INLINE FloatVec from_bits(BitsVec bits) {
    return reinterpret_cast<FloatVec>(bits);
}

SORVO_INLINE FloatVec magnitude_of(FloatVec value) {
    return from_bits(bits_of(value) & 0x7FFFFFFFU);
}

/// One bit for each lane of which the mask is set.
template <class Mask>
SORVO_INLINE unsigned lane_bits(Mask mask) {
    unsigned bits = 0;
    for (std::size_t i = 0; i < lanes_of<Mask>; ++i) {
        bits |= (mask[i] != 0 ? 1U : 0U) << i;
    }
    return bits;
}

#if (defined(__FMA__) || defined(__AVX512F__) || defined(__aarch64__)) && \
    !defined(SORVO_AUDIO_GENERIC)
constexpr bool has_fused_multiply = true;
#else
constexpr bool has_fused_multiply = false;
#endif

/// a - b c, rounded once; only where has_fused_multiply. Results may not depend on it.
template <class V>
SORVO_INLINE V minus_product(V a, V b, V c) {
    for (std::size_t i = 0; i < lanes_of<V>; ++i) {
        if constexpr (sizeof(a[0]) == sizeof(float)) {
            a[i] = __builtin_fmaf(-b[i], c[i], a[i]);
        } else {
            a[i] = __builtin_fma(-b[i], c[i], a[i]);
        }
    }
    return a;
}

template <class V>
SORVO_INLINE V square_root(V value) {
    for (std::size_t i = 0; i < lanes_of<V>; ++i) {
        if constexpr (sizeof(value[0]) == sizeof(float)) {
            value[i] = __builtin_sqrtf(value[i]);
        } else {
            value[i] = __builtin_sqrt(value[i]);
        }
    }
    return value;
}

// Between floats and doubles. Samples may be either type, and are computed with as doubles.

/// The number in all lanes.
SORVO_INLINE DoubleVec broadcast_double(double value) {
    return value - DoubleVec{};
}

/// The lanes of a FloatVec or an IntVec, each as a double.
template <class V>
SORVO_INLINE Wide widen(V x) {
    Wide result;
    for (std::size_t i = 0; i < double_lane_n; ++i) {
        result.low[i] = static_cast<double>(x[i]);
        result.high[i] = static_cast<double>(x[double_lane_n + i]);
    }
    return result;
}

/// Each double rounded to a float.
template <class W = Wide>
SORVO_INLINE FloatVec narrow(W x) {
    FloatVec result;
    for (std::size_t i = 0; i < double_lane_n; ++i) {
        result[i] = static_cast<float>(x.low[i]);
        result[double_lane_n + i] = static_cast<float>(x.high[i]);
    }
    return result;
}

/// a + b c, rounded once or twice, whichever is faster: for what is proved not to depend on it.
template <class V>
SORVO_INLINE V plus_product_somehow(V a, V b, V c) {
    return a + b * c;
}

/// double_lane_n numbers.
template <class T>
SORVO_INLINE DoubleVec load_wide(const T* p) {
    return __builtin_convertvector((load<Vec<T, double_lane_n>>(p)), DoubleVec);
}

/// double_lane_n numbers, each rounded to the type in memory.
template <class T>
SORVO_INLINE void store_rounded(T* p, DoubleVec value) {
    using Stored = Vec<T, double_lane_n>;
    store(p, __builtin_convertvector(value, Stored));
}

/// What storing as T and loading again makes of the value.
template <class T>
SORVO_INLINE DoubleVec rounded_to(DoubleVec value) {
    using Stored = Vec<T, double_lane_n>;
    return __builtin_convertvector(__builtin_convertvector(value, Stored), DoubleVec);
}

}  // namespace sorvo::audio::SORVO_LEVEL

#if defined(SORVO_AUDIO_GENERIC)
// The templates alone.
#elif defined(__SSE2__)
#include "simd/x86.h"
#elif defined(__aarch64__)
#include "simd/neon.h"
#endif

namespace sorvo::audio::SORVO_LEVEL {

/// Replaces the lanes of `value` in which neither a <= limit nor x is +0; returns one bit for each.
template <class V>
SORVO_INLINE unsigned replace_unless_below(V& value, V replacement, V a, V limit, V x) {
    const MaskVec replaced = ~(a <= limit) & (bits_of(x) != 0U);
    const auto mask = reinterpret_cast<BitsVec>(replaced);
    value = from_bits((mask & bits_of(replacement)) | (~mask & bits_of(value)));
    return lane_bits(replaced);
}

}  // namespace sorvo::audio::SORVO_LEVEL
