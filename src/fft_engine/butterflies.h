// Transforms of a few values, or of as many vectors.
#pragma once

#include "simd/complex.h"

namespace sorvo::audio::kelpon::fft::SORVO_LEVEL {

using namespace ::sorvo::audio::SORVO_LEVEL;

template <class V>
SORVO_INLINE Complex<V> times_minus_i(Complex<V> a) {
    return {a.im, -a.re};
}

/// cos and sin of 2 pi j / p for j from 1 to p / 2.
template <int p>
struct OddRoots;

template <>
struct OddRoots<3> {
    static constexpr float cosine[] = {-0.5F};
    static constexpr float sine[] = {0.866025404F};
};

template <>
struct OddRoots<5> {
    static constexpr float cosine[] = {0.309016994F, -0.809016994F};
    static constexpr float sine[] = {0.951056516F, 0.587785252F};
};

template <>
struct OddRoots<7> {
    static constexpr float cosine[] = {0.623489802F, -0.222520934F, -0.900968868F};
    static constexpr float sine[] = {0.781831482F, 0.974927912F, 0.433883739F};
};

/// The forward transform of radix values in place, for an odd radix: inputs and outputs j and
/// radix - j share their products.
template <int radix, class V>
SORVO_INLINE void butterfly(Complex<V> (&x)[radix]) {
    constexpr int pairs = radix / 2;
    Complex<V> sum[pairs + 1];
    Complex<V> difference[pairs + 1];
    const Complex<V> first = x[0];
#pragma GCC unroll 4
    for (int a = 1; a <= pairs; ++a) {
        sum[a] = x[a] + x[radix - a];
        difference[a] = x[a] - x[radix - a];
        x[0] = x[0] + sum[a];
    }
#pragma GCC unroll 4
    for (int b = 1; b <= pairs; ++b) {
        Complex<V> even = first;
        Complex<V> odd = {};
#pragma GCC unroll 4
        for (int a = 1; a <= pairs; ++a) {
            const int j = a * b % radix;
            const int root = (j <= pairs ? j : radix - j) - 1;
            const float c = OddRoots<radix>::cosine[root];
            const float s = j <= pairs ? OddRoots<radix>::sine[root] : -OddRoots<radix>::sine[root];
            even = {even.re + sum[a].re * c, even.im + sum[a].im * c};
            odd = a == 1 ? Complex<V>{difference[a].re * s, difference[a].im * s}
                         : Complex<V>{odd.re + difference[a].re * s, odd.im + difference[a].im * s};
        }
        odd = times_minus_i(odd);
        x[b] = even + odd;
        x[radix - b] = even - odd;
    }
}

template <class V>
SORVO_INLINE void butterfly(Complex<V> (&x)[1]) {
    (void)x;
}

template <class V>
SORVO_INLINE void butterfly(Complex<V> (&x)[2]) {
    const Complex<V> second = x[1];
    x[1] = x[0] - second;
    x[0] = x[0] + second;
}

template <class V>
SORVO_INLINE void butterfly(Complex<V> (&x)[4]) {
    const Complex<V> even_sum = x[0] + x[2];
    const Complex<V> even_difference = x[0] - x[2];
    const Complex<V> odd_sum = x[1] + x[3];
    const Complex<V> odd_difference = times_minus_i(x[1] - x[3]);
    x[0] = even_sum + odd_sum;
    x[1] = even_difference + odd_difference;
    x[2] = even_sum - odd_sum;
    x[3] = even_difference - odd_difference;
}

template <class V>
SORVO_INLINE void butterfly(Complex<V> (&x)[8]) {
    constexpr float half_root = 0.707106781F;
    Complex<V> even[] = {x[0], x[2], x[4], x[6]};
    Complex<V> odd[] = {x[1], x[3], x[5], x[7]};
    butterfly(even);
    butterfly(odd);
    odd[1] = {(odd[1].re + odd[1].im) * half_root, (odd[1].im - odd[1].re) * half_root};
    odd[2] = times_minus_i(odd[2]);
    odd[3] = {(odd[3].im - odd[3].re) * half_root, (odd[3].re + odd[3].im) * -half_root};
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
        x[k] = even[k] + odd[k];
        x[k + 4] = even[k] - odd[k];
    }
}

}  // namespace sorvo::audio::kelpon::fft::SORVO_LEVEL
