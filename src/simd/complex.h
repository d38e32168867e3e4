// Complex numbers whose parts are floats, or vectors of floats.
#pragma once

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {

/// Copied part by part: g++ copies aggregates of vectors through memory, in smaller pieces than
/// they are loaded from there, and the processor waits for that.
template <class V>
struct Complex {
    V re;
    V im;

    Complex() = default;
    SORVO_INLINE Complex(V real, V imaginary) : re(real), im(imaginary) {}
    SORVO_INLINE Complex(const Complex& other) : re(other.re), im(other.im) {}
    SORVO_INLINE Complex& operator=(const Complex& other) {
        re = other.re;
        im = other.im;
        return *this;
    }
};

using ComplexVec = Complex<FloatVec>;

template <class V>
SORVO_INLINE Complex<V> operator+(Complex<V> a, Complex<V> b) {
    return {a.re + b.re, a.im + b.im};
}

template <class V>
SORVO_INLINE Complex<V> operator-(Complex<V> a, Complex<V> b) {
    return {a.re - b.re, a.im - b.im};
}

/// The twiddle w times a value.
template <class W, class V>
SORVO_INLINE Complex<V> operator*(Complex<W> w, Complex<V> x) {
    return {w.re * x.re - w.im * x.im, w.re * x.im + w.im * x.re};
}

template <class V>
SORVO_INLINE Complex<V> conjugate(Complex<V> a) {
    return {a.re, -a.im};
}

// Arrays of complex numbers: the parts of element j are at 2 j and 2 j + 1.

template <class V>
SORVO_INLINE Complex<V> load_complex(const V* x, std::size_t j) {
    return {x[2 * j], x[2 * j + 1]};
}

template <class V>
SORVO_INLINE void store_complex(V* x, std::size_t j, Complex<V> value) {
    x[2 * j] = value.re;
    x[2 * j + 1] = value.im;
}

SORVO_INLINE ComplexVec broadcast(Complex<float> value) {
    return {broadcast(value.re), broadcast(value.im)};
}

}  // namespace sorvo::audio::SORVO_LEVEL
