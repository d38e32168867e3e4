// The arithmetic of transforms, once: on floats for the definition, on vectors for kernels. Values
// are complex numbers whose parts are of type V, twiddles complex numbers whose parts are of type
// W.
#pragma once

#include "simd/complex.h"

namespace sorvo::audio::SORVO_LEVEL {

/// Which products of a transform are computed.
///  - literal: all of the definition's. Right for any data.
///  - needed: without those by the root (1, -0), those of imaginary parts that are 0 and the sum's
///    first 0. They only decide the sign of zeros, and of those only where a sum can be -0 at all;
///    but with what is not finite, or overflows, they give NaN. So data must be finite and small.
enum class Products { literal, needed };

/// a - i b (forward) or a + i b.
template <bool inverse, class V>
SORVO_INLINE Complex<V> minus_i(Complex<V> a, Complex<V> b) {
    return inverse ? Complex<V>{a.re - b.im, a.im + b.re} : Complex<V>{a.re + b.im, a.im - b.re};
}

/// The twiddles of one column of a radix-4 stage: of the column's number, its double and its
/// triple.
template <class W>
struct Radix4Twiddles {
    Complex<W> w1;
    Complex<W> w2;
    Complex<W> w3;
};

/// The radix-4 butterfly by decimation in frequency, without its twiddles. Outputs come in the
/// order 0, 2, 1, 3: two radix-2 steps in one, so that a bit reversal at the end restores natural
/// order.
template <bool inverse, class V>
SORVO_INLINE void radix4(Complex<V> (&x)[4]) {
    const Complex<V> ac = x[0] + x[2];
    const Complex<V> bd = x[1] + x[3];
    const Complex<V> a_c = x[0] - x[2];
    const Complex<V> b_d = x[1] - x[3];
    x[0] = ac + bd;
    x[1] = ac - bd;
    x[2] = minus_i<inverse>(a_c, b_d);
    x[3] = minus_i<!inverse>(a_c, b_d);
}

template <bool inverse, class V, class W>
SORVO_INLINE void radix4(Complex<V> (&x)[4], const Radix4Twiddles<W>& w) {
    radix4<inverse>(x);
    x[1] = w.w2 * x[1];
    x[2] = w.w1 * x[2];
    x[3] = w.w3 * x[3];
}

/// The same, forward, of four real numbers; output 0 is real again. As with Products::needed.
template <class V, class W>
SORVO_INLINE void real_radix4(V& sum, Complex<V> (&outputs)[3], const V (&x)[4],
                              const Radix4Twiddles<W>& w) {
    const V ac = x[0] + x[2];
    const V bd = x[1] + x[3];
    const V a_c = x[0] - x[2];
    const V b_d = x[1] - x[3];
    sum = ac + bd;
    outputs[0] = {w.w2.re * (ac - bd), w.w2.im * (ac - bd)};
    outputs[1] = {w.w1.re * a_c + w.w1.im * b_d, w.w1.im * a_c - w.w1.re * b_d};
    outputs[2] = {w.w3.re * a_c - w.w3.im * b_d, w.w3.im * a_c + w.w3.re * b_d};
}

// Direct sums: of a stage of any other radix, of a direct transform, of one output or several at
// once.

template <class W, class V>
SORVO_INLINE void add_product(Complex<V>& sum, Complex<W> w, Complex<V> y) {
    sum.re += w.re * y.re - w.im * y.im;
    sum.im += w.im * y.re + w.re * y.im;
}

/// y is a real number.
template <class W, class V>
SORVO_INLINE void add_product(Complex<V>& sum, Complex<W> w, V y) {
    sum.re += w.re * y;
    sum.im += w.im * y;
}

/// Adds to each sum i the products w(i, s) y(s) for s = 1, 2, ... n - 1, in this order.
template <std::size_t sum_n, class V, class Twiddle, class Value>
SORVO_INLINE void add_products(Complex<V> (&sums)[sum_n], std::size_t n, Twiddle w, Value y) {
    for (std::size_t s = 1; s < n; ++s) {
        const auto value = y(s);
        for (std::size_t i = 0; i < sum_n; ++i) {
            add_product(sums[i], w(i, s), value);
        }
    }
}

/// What such a sum starts with: the first value, which comes with the root (1, -0) or (1, 0).
template <Products products, class V, class W>
SORVO_INLINE Complex<V> first_term(Complex<V> y, Complex<W> one) {
    if constexpr (products == Products::needed) {
        return y;
    } else {
        Complex<V> sum = {};
        add_product(sum, one, y);
        return sum;
    }
}

}  // namespace sorvo::audio::SORVO_LEVEL
