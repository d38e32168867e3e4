#include <algorithm>
#include <cstddef>

#include "fft/butterflies.h"
#include "fft/fft.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

using namespace portable;

/// Smallest factor of `rem` that leaves a cofactor at least as large; 0 where rem is prime.
std::size_t smallest_factor(std::size_t rem) {
    std::size_t d = rem % 2 == 0 ? 2 : 3;
    while (d * d <= rem) {
        if (rem % d == 0) {
            return d;
        }
        d += 2;
    }
    return 0;
}

/// Splits every block of length `rem` into d interleaved subsequences of stride d.
void split_blocks(std::vector<float>& data, std::vector<float>& scratch, std::size_t n,
                  std::size_t rem, std::size_t d) {
    const std::size_t m = rem / d;
    for (std::size_t start = 0; start < n; start += rem) {
        for (std::size_t r = 0; r < d; ++r) {
            for (std::size_t j = 0; j < m; ++j) {
                const std::size_t to = 2 * (start + r * m + j);
                const std::size_t from = 2 * (start + d * j + r);
                scratch[to] = data[from];
                scratch[to + 1] = data[from + 1];
            }
        }
    }
    std::copy_n(scratch.begin(), 2 * n, data.begin());
}

/// One stage of n / (d m) blocks: joins d transforms of length m each into one of length d m. With
/// m = 1 it is the direct transform of d samples.
///   output k = sum over s = 0, 1, ... d - 1 of Y_s[k mod m] w^(s k),  w = e^(-+2 pi i / (d m))
/// Every sum starts from +0 and grows in the order of s.
void combine(std::vector<float>& data, std::vector<float>& scratch, std::size_t n, std::size_t d,
             std::size_t m, const std::vector<float>& table) {
    const std::size_t length = d * m;
    const std::size_t blocks = n / length;
    for (std::size_t start = 0; start < n; start += length) {
        for (std::size_t k = 0; k < length; ++k) {
            const std::size_t column = start + k % m;
            std::size_t turn = 0;  // s k mod length
            const auto next_root = [&](std::size_t /*sum*/, std::size_t /*s*/) {
                turn += k;
                turn -= turn >= length ? length : 0;
                return load_complex(table.data(), turn * blocks);
            };
            const auto value = [&](std::size_t s) {
                return load_complex(data.data(), column + s * m);
            };
            Complex<float> sum[1] = {
                first_term<Products::literal>(value(0), load_complex(table.data(), 0))};
            add_products(sum, d, next_root, value);
            store_complex(scratch.data(), start + k, sum[0]);
        }
    }
    std::copy_n(scratch.begin(), 2 * n, data.begin());
}

}  // namespace

std::vector<std::size_t> fft_factors(std::size_t n) {
    std::vector<std::size_t> factors;
    while (const std::size_t d = smallest_factor(n)) {
        factors.push_back(d);
        n /= d;
    }
    return factors;
}

void dft_sub(std::vector<float>& data, int n, int blocks, const std::vector<float>& table) {
    const auto size = static_cast<std::size_t>(n);
    auto scratch = make_zeros<float>(2 * size);
    combine(data, scratch, size, size / static_cast<std::size_t>(blocks), 1, table);
}

void fft_general(std::vector<float>& data, int n, const std::vector<float>& table) {
    const auto size = static_cast<std::size_t>(n);
    auto scratch = make_zeros<float>(2 * size);
    const std::vector<std::size_t> factors = fft_factors(size);
    std::size_t rem = size;
    for (const std::size_t d : factors) {
        split_blocks(data, scratch, size, rem, d);
        rem /= d;
    }
    combine(data, scratch, size, rem, 1, table);
    std::size_t m = rem;
    for (auto d = factors.rbegin(); d != factors.rend(); ++d) {
        combine(data, scratch, size, *d, m, table);
        m *= *d;
    }
}

}  // namespace sorvo::audio
