#include <cstddef>
#include <utility>

#include "fft/fft.h"

namespace sorvo::audio {
namespace {

struct Complex {
    float re;
    float im;
};

Complex operator+(Complex a, Complex b) {
    return {a.re + b.re, a.im + b.im};
}
Complex operator-(Complex a, Complex b) {
    return {a.re - b.re, a.im - b.im};
}

/// a - i b and a + i b.
Complex minus_i(Complex a, Complex b) {
    return {a.re + b.im, a.im - b.re};
}
Complex plus_i(Complex a, Complex b) {
    return {a.re - b.im, a.im + b.re};
}

/// t times the twiddle (c, s), which the table stores expanded with -s.
Complex multiply(Complex t, float c, float s, float minus_s) {
    return {c * t.re + minus_s * t.im, c * t.im + s * t.re};
}

Complex load(const float* data, std::size_t j) {
    return {data[2 * j], data[2 * j + 1]};
}

void store(float* data, std::size_t j, Complex value) {
    data[2 * j] = value.re;
    data[2 * j + 1] = value.im;
}

/// The outputs land in the order 0, 2, 1, 3: two radix-2 steps in one, so that the final bit
/// reversal restores natural order.
template <bool inverse>
void butterflies(float* data, std::size_t n, std::size_t start, std::size_t span,
                 std::size_t quarter, const float* twiddles) {
    const float* const w2 = twiddles;
    const float* const w1 = twiddles + 4;
    const float* const w3 = twiddles + 8;
    for (std::size_t s = start; s < n; s += span) {
        const Complex a = load(data, s);
        const Complex b = load(data, s + quarter);
        const Complex c = load(data, s + 2 * quarter);
        const Complex d = load(data, s + 3 * quarter);
        const Complex ac = a + c;
        const Complex bd = b + d;
        const Complex a_c = a - c;
        const Complex b_d = b - d;
        const Complex t1 = inverse ? plus_i(a_c, b_d) : minus_i(a_c, b_d);
        const Complex t3 = inverse ? minus_i(a_c, b_d) : plus_i(a_c, b_d);
        store(data, s, ac + bd);
        store(data, s + quarter, multiply(ac - bd, w2[0], w2[1], w2[2]));
        store(data, s + 2 * quarter, multiply(t1, w1[0], w1[1], w1[2]));
        store(data, s + 3 * quarter, multiply(t3, w3[1], w3[3], w3[0]));
    }
}

template <bool inverse>
void column(std::vector<float>& data, int n, int start, int span, int quarter,
            const std::vector<float>& table, std::size_t twiddle_offset) {
    butterflies<inverse>(data.data(), static_cast<std::size_t>(n), static_cast<std::size_t>(start),
                         static_cast<std::size_t>(span), static_cast<std::size_t>(quarter),
                         table.data() + twiddle_offset);
}

template <bool inverse>
void radix4_stages(std::vector<float>& data, int n, const std::vector<float>& table) {
    std::size_t stride = 12;
    for (int span = n; span >= 4; span /= 4, stride *= 4) {
        const int quarter = span / 4;
        for (int k = 0; k < quarter; ++k) {
            column<inverse>(data, n, k, span, quarter, table, static_cast<std::size_t>(k) * stride);
        }
    }
}

bool log2_is_odd(int n) {
    bool odd = false;
    for (; n > 1; n /= 2) {
        odd = !odd;
    }
    return odd;
}

void bit_reversal(std::vector<float>& data, int n) {
    int j = 0;
    for (int i = 1; i < n - 1; ++i) {
        int k = n;
        do {
            k /= 2;
            j ^= k;
        } while (k > j);
        if (i < j) {
            const auto a = 2 * static_cast<std::size_t>(i);
            const auto b = 2 * static_cast<std::size_t>(j);
            std::swap(data[a], data[b]);
            std::swap(data[a + 1], data[b + 1]);
        }
    }
}

template <bool inverse>
void transform(std::vector<float>& data, int n, const std::vector<float>& table) {
    radix4_stages<inverse>(data, n, table);
    if (log2_is_odd(n)) {
        fft_pow2_merge(data, n);
    }
    bit_reversal(data, n);
}

}  // namespace

void fft_pow2_core(std::vector<float>& data, int n, int start, int span, int quarter,
                   const std::vector<float>& table, int twiddleOffset) {
    column<false>(data, n, start, span, quarter, table, static_cast<std::size_t>(twiddleOffset));
}

void ifft_pow2_core(std::vector<float>& data, int n, int start, int span, int quarter,
                    const std::vector<float>& table, int twiddleOffset) {
    column<true>(data, n, start, span, quarter, table, static_cast<std::size_t>(twiddleOffset));
}

void fft_pow2_merge(std::vector<float>& data, int n) {
    float* const x = data.data();
    for (std::size_t i = 0; i + 1 < static_cast<std::size_t>(n); i += 2) {
        const Complex a = load(x, i);
        const Complex b = load(x, i + 1);
        store(x, i, a + b);
        store(x, i + 1, a - b);
    }
}

void fft_pow2(std::vector<float>& data, int n, const std::vector<float>& table) {
    transform<false>(data, n, table);
}

void ifft_pow2(std::vector<float>& data, int n, const std::vector<float>& table) {
    transform<true>(data, n, table);
    const std::size_t floats = 2 * static_cast<std::size_t>(n);
    const auto divisor = static_cast<float>(n);
    for (std::size_t i = 0; i < floats; ++i) {
        data[i] /= divisor;
    }
}

}  // namespace sorvo::audio
