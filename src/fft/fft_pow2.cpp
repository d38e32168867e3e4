#include <cstddef>
#include <utility>

#include "fft/butterflies.h"
#include "fft/fft.h"

namespace sorvo::audio {
namespace {

using portable::Complex;
using portable::load_complex;
using portable::radix4;
using portable::Radix4Twiddles;
using portable::store_complex;

/// The butterflies of one column of all blocks; `group` is the column's in the table.
template <bool inverse>
void butterflies(float* data, std::size_t n, std::size_t start, std::size_t span,
                 std::size_t quarter, const float* group) {
    const Radix4Twiddles<float> w = {
        {group[4], group[5]}, {group[0], group[1]}, {group[9], group[11]}};
    for (std::size_t s = start; s < n; s += span) {
        Complex<float> x[4];
        for (std::size_t i = 0; i < 4; ++i) {
            x[i] = load_complex(data, s + i * quarter);
        }
        radix4<inverse>(x, w);
        for (std::size_t i = 0; i < 4; ++i) {
            store_complex(data, s + i * quarter, x[i]);
        }
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
        const Complex<float> a = load_complex(x, i);
        const Complex<float> b = load_complex(x, i + 1);
        store_complex(x, i, a + b);
        store_complex(x, i + 1, a - b);
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
