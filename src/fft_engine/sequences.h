// How single values and vectors of them are read from and written to each kind of sequence of
// complex numbers.
#pragma once

#include "fft_engine/kernels.h"
#include "simd/complex.h"
#include "simd/shuffle.h"

namespace sorvo::audio::kelpon::fft::SORVO_LEVEL {

using namespace ::sorvo::audio::SORVO_LEVEL;

using QuarterVec = Vec<float, 4>;

template <class Real>
SORVO_INLINE Complex<float> get(const Real* in, std::size_t i) {
    return {static_cast<float>(in[i]), 0.0F};
}

SORVO_INLINE Complex<float> get(const std::complex<float>* in, std::size_t i) {
    return load_complex(reinterpret_cast<const float*>(in), i);
}

SORVO_INLINE Complex<float> get(ConstPlanes in, std::size_t i) {
    return {in.re[i], in.im[i]};
}

template <class V>
SORVO_INLINE Complex<V> get_vector(const short* in, std::size_t i) {
    return {__builtin_convertvector((load<Vec<short, lanes_of<V>>>(in + i)), V), V{}};
}

template <class V>
SORVO_INLINE Complex<V> get_vector(const float* in, std::size_t i) {
    return {load<V>(in + i), V{}};
}

template <class V>
SORVO_INLINE Complex<V> get_vector(const std::complex<float>* in, std::size_t i) {
    const float* const pairs = reinterpret_cast<const float*>(in + i);
    Complex<V> value;
    unzip(value.re, value.im, load<V>(pairs), load<V>(pairs + lanes_of<V>));
    return value;
}

template <class V>
SORVO_INLINE Complex<V> get_vector(ConstPlanes in, std::size_t i) {
    return {load<V>(in.re + i), load<V>(in.im + i)};
}

SORVO_INLINE void put(std::complex<float>* out, std::size_t i, Complex<float> value) {
    store_complex(reinterpret_cast<float*>(out), i, value);
}

SORVO_INLINE void put(Planes out, std::size_t i, Complex<float> value) {
    out.re[i] = value.re;
    out.im[i] = value.im;
}

template <class V>
SORVO_INLINE void put_vector(std::complex<float>* out, std::size_t i, Complex<V> value) {
    float* const pairs = reinterpret_cast<float*>(out + i);
    V low;
    V high;
    zip(low, high, value.re, value.im);
    store(pairs, low);
    store(pairs + lanes_of<V>, high);
}

template <class V>
SORVO_INLINE void put_vector(Planes out, std::size_t i, Complex<V> value) {
    store(out.re + i, value.re);
    store(out.im + i, value.im);
}

template <class V>
SORVO_INLINE Complex<V> swap_if(bool swapped, Complex<V> value) {
    return swapped ? Complex<V>{value.im, value.re} : value;
}

// Rows of 16 complex numbers, the real parts first.

template <class V = FloatVec>
SORVO_INLINE Complex<V> load_row(const float* row) {
    return {load<V>(row), load<V>(row + row_lane_n)};
}

template <class V>
SORVO_INLINE void store_row(float* row, Complex<V> value) {
    store(row, value.re);
    store(row + row_lane_n, value.im);
}

}  // namespace sorvo::audio::kelpon::fft::SORVO_LEVEL
