// Vectors of 4, 8 or 16 floats, and how they are read from and written to each kind of sequence.
//
// Everything here is inlined into functions that are compiled for an instruction set with such
// vectors.
#pragma once

#include <complex>
#include <cstddef>
#include <cstring>

#include "fft_engine/butterflies.h"
#include "fft_engine/kernels.h"

// Vectors are passed only between functions that are inlined into one another, so how a call would
// pass them does not matter.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace sorvo::audio::kelpon::fft {

template <int width>
struct VectorOf {
    using type __attribute__((vector_size(width * sizeof(float)))) = float;
};
template <int width>
using Vector = typename VectorOf<width>::type;

template <int width>
[[gnu::always_inline]] inline Vector<width> load(const float* from) {
    Vector<width> vector;
    std::memcpy(&vector, from, sizeof(vector));
    return vector;
}

template <class V>
[[gnu::always_inline]] inline void store(float* to, const V& vector) {
    std::memcpy(to, &vector, sizeof(vector));
}

template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> load_row(const float* row) {
    return {load<width>(row), load<width>(row + lane_n)};
}

template <class V>
[[gnu::always_inline]] inline void store_row(float* row, const Complex<V>& value) {
    store(row, value.re);
    store(row + lane_n, value.im);
}

/// a0 b0 a1 b1 ... of the lower (zip_low) or upper (zip_high) halves; even and odd undo them.
[[gnu::always_inline]] inline Vector<4> zip_low(const Vector<4>& a, const Vector<4>& b) {
    return __builtin_shufflevector(a, b, 0, 4, 1, 5);
}
[[gnu::always_inline]] inline Vector<4> zip_high(const Vector<4>& a, const Vector<4>& b) {
    return __builtin_shufflevector(a, b, 2, 6, 3, 7);
}
[[gnu::always_inline]] inline Vector<4> even(const Vector<4>& a, const Vector<4>& b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6);
}
[[gnu::always_inline]] inline Vector<4> odd(const Vector<4>& a, const Vector<4>& b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7);
}
[[gnu::always_inline]] inline Vector<8> zip_low(const Vector<8>& a, const Vector<8>& b) {
    return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}
[[gnu::always_inline]] inline Vector<8> zip_high(const Vector<8>& a, const Vector<8>& b) {
    return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}
[[gnu::always_inline]] inline Vector<8> even(const Vector<8>& a, const Vector<8>& b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14);
}
[[gnu::always_inline]] inline Vector<8> odd(const Vector<8>& a, const Vector<8>& b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15);
}
[[gnu::always_inline]] inline Vector<16> zip_low(const Vector<16>& a, const Vector<16>& b) {
    return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}
[[gnu::always_inline]] inline Vector<16> zip_high(const Vector<16>& a, const Vector<16>& b) {
    return __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15,
                                   31);
}
[[gnu::always_inline]] inline Vector<16> even(const Vector<16>& a, const Vector<16>& b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}
[[gnu::always_inline]] inline Vector<16> odd(const Vector<16>& a, const Vector<16>& b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
}

// Access to element i of each kind of sequence, alone and `width` at once.

template <class Real>
[[gnu::always_inline]] inline Complex<float> get(const Real* in, std::size_t i) {
    return {static_cast<float>(in[i]), 0.0F};
}
[[gnu::always_inline]] inline Complex<float> get(const std::complex<float>* in, std::size_t i) {
    return {in[i].real(), in[i].imag()};
}
[[gnu::always_inline]] inline Complex<float> get(ConstPlanes in, std::size_t i) {
    return {in.re[i], in.im[i]};
}

template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> get_vector(const short* in, std::size_t i) {
    float values[width];
    for (std::size_t lane = 0; lane < width; ++lane)
        values[lane] = static_cast<float>(in[i + lane]);
    return {load<width>(values), Vector<width>{}};
}
template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> get_vector(const float* in, std::size_t i) {
    return {load<width>(in + i), Vector<width>{}};
}
template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> get_vector(const std::complex<float>* in,
                                                                std::size_t i) {
    const float* const pairs = reinterpret_cast<const float*>(in + i);
    const Vector<width> low = load<width>(pairs);
    const Vector<width> high = load<width>(pairs + width);
    return {even(low, high), odd(low, high)};
}
template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> get_vector(ConstPlanes in, std::size_t i) {
    return {load<width>(in.re + i), load<width>(in.im + i)};
}

[[gnu::always_inline]] inline void put(std::complex<float>* out, std::size_t i,
                                       const Complex<float>& value) {
    out[i] = {value.re, value.im};
}
[[gnu::always_inline]] inline void put(Planes out, std::size_t i, const Complex<float>& value) {
    out.re[i] = value.re;
    out.im[i] = value.im;
}
template <class V>
[[gnu::always_inline]] inline void put_vector(std::complex<float>* out, std::size_t i,
                                              const Complex<V>& value) {
    float* const pairs = reinterpret_cast<float*>(out + i);
    store(pairs, zip_low(value.re, value.im));
    store(pairs + sizeof(V) / sizeof(float), zip_high(value.re, value.im));
}
template <class V>
[[gnu::always_inline]] inline void put_vector(Planes out, std::size_t i, const Complex<V>& value) {
    store(out.re + i, value.re);
    store(out.im + i, value.im);
}

template <class V>
[[gnu::always_inline]] inline Complex<V> swap_if(bool swapped, const Complex<V>& value) {
    return swapped ? Complex<V>{value.im, value.re} : value;
}

}  // namespace sorvo::audio::kelpon::fft
