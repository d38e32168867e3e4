// Vectors for kernels that are written once and compiled for every level. All functions are inlined
// into the functions that name the level, and vectors go by reference: the ways to pass them by
// value differ between levels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace sorvo::audio {

/// Vectors of n elements; n is 2, 4, 8 or 16.
template <std::size_t n>
struct Vectors {
    // A dependent size needs a typedef: an alias loses the attribute under g++.
    typedef float Floats __attribute__((vector_size(n * sizeof(float))));
    typedef double Doubles __attribute__((vector_size(n * sizeof(double))));
};

template <class Vector, class T>
[[gnu::always_inline]] inline void load(Vector& v, const T* from) {
    std::memcpy(&v, from, sizeof v);
}

template <class Vector, class T>
[[gnu::always_inline]] inline void store(T* to, const Vector& v) {
    std::memcpy(to, &v, sizeof v);
}

/// Converts n floats. Taken as the low half of twice as many, which compiles to one instruction;
/// the plain conversion makes g++ split the vector.
template <std::size_t n>
[[gnu::always_inline]] inline void widen(typename Vectors<n>::Doubles& wide,
                                         const typename Vectors<n>::Floats& v) {
    typename Vectors<2 * n>::Floats twice;
    if constexpr (n == 8) {
        twice =
            __builtin_shufflevector(v, v, 0, 1, 2, 3, 4, 5, 6, 7, -1, -1, -1, -1, -1, -1, -1, -1);
    } else if constexpr (n == 4) {
        twice = __builtin_shufflevector(v, v, 0, 1, 2, 3, -1, -1, -1, -1);
    } else {
        twice = __builtin_shufflevector(v, v, 0, 1, -1, -1);
    }
    const auto converted = __builtin_convertvector(twice, typename Vectors<2 * n>::Doubles);
    if constexpr (n == 8) {
        wide = __builtin_shufflevector(converted, converted, 0, 1, 2, 3, 4, 5, 6, 7);
    } else if constexpr (n == 4) {
        wide = __builtin_shufflevector(converted, converted, 0, 1, 2, 3);
    } else {
        wide = __builtin_shufflevector(converted, converted, 0, 1);
    }
}

template <std::size_t n>
[[gnu::always_inline]] inline void narrow(typename Vectors<n>::Floats& v,
                                          const typename Vectors<n>::Doubles& wide) {
    v = __builtin_convertvector(wide, typename Vectors<n>::Floats);
}

constexpr std::size_t cache_line_n = 64;

/// Asks for the cache line of an address; whether anything is there does not matter. In a function
/// that is not inlined, g++ takes this for no effect and drops the call.
[[gnu::always_inline]] inline void prefetch(std::uintptr_t address) {
    __builtin_prefetch(reinterpret_cast<const void*>(address));
}

/// Elements along one side of the squares that transpose_square() moves.
template <class T>
constexpr std::size_t square_n = 32 / sizeof(T);

/// dst[i * dst_stride + j] = src[j * src_stride + i] for i and j below square_n.
[[gnu::always_inline]] inline void transpose_square(float* dst, std::ptrdiff_t dst_stride,
                                                    const float* src, std::ptrdiff_t src_stride) {
    using Floats = Vectors<8>::Floats;
    Floats a[8];
    for (std::ptrdiff_t i = 0; i < 8; i += 2) {
        Floats x;
        Floats y;
        load(x, src + i * src_stride);
        load(y, src + (i + 1) * src_stride);
        a[i] = __builtin_shufflevector(x, y, 0, 8, 1, 9, 4, 12, 5, 13);
        a[i + 1] = __builtin_shufflevector(x, y, 2, 10, 3, 11, 6, 14, 7, 15);
    }
    Floats b[8];
    for (std::ptrdiff_t i = 0; i < 8; i += 4) {
        b[i] = __builtin_shufflevector(a[i], a[i + 2], 0, 1, 8, 9, 4, 5, 12, 13);
        b[i + 1] = __builtin_shufflevector(a[i], a[i + 2], 2, 3, 10, 11, 6, 7, 14, 15);
        b[i + 2] = __builtin_shufflevector(a[i + 1], a[i + 3], 0, 1, 8, 9, 4, 5, 12, 13);
        b[i + 3] = __builtin_shufflevector(a[i + 1], a[i + 3], 2, 3, 10, 11, 6, 7, 14, 15);
    }
    for (std::ptrdiff_t i = 0; i < 4; ++i) {
        const Floats low = __builtin_shufflevector(b[i], b[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
        const Floats high = __builtin_shufflevector(b[i], b[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
        store(dst + i * dst_stride, low);
        store(dst + (i + 4) * dst_stride, high);
    }
}

[[gnu::always_inline]] inline void transpose_square(double* dst, std::ptrdiff_t dst_stride,
                                                    const double* src, std::ptrdiff_t src_stride) {
    using Doubles = Vectors<4>::Doubles;
    Doubles a[4];
    for (std::ptrdiff_t i = 0; i < 4; i += 2) {
        Doubles x;
        Doubles y;
        load(x, src + i * src_stride);
        load(y, src + (i + 1) * src_stride);
        a[i] = __builtin_shufflevector(x, y, 0, 4, 2, 6);
        a[i + 1] = __builtin_shufflevector(x, y, 1, 5, 3, 7);
    }
    for (std::ptrdiff_t i = 0; i < 2; ++i) {
        const Doubles low = __builtin_shufflevector(a[i], a[i + 2], 0, 1, 4, 5);
        const Doubles high = __builtin_shufflevector(a[i], a[i + 2], 2, 3, 6, 7);
        store(dst + i * dst_stride, low);
        store(dst + (i + 2) * dst_stride, high);
    }
}

}  // namespace sorvo::audio
