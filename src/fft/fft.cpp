#include "fft/fft.h"

#include <cstddef>

#include "fft/fft_table.h"

namespace sorvo::audio {

void fft_pre_process(std::vector<float>& dst, const float* src, int n) {
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        const auto at = static_cast<std::size_t>(2 * i);
        dst[at] = src[i];
        dst[at + 1] = 0.0F;
    }
}

void fft(std::vector<float>& data, int n, const std::vector<float>& table) {
    if (is_pow2(n)) {
        fft_pow2(data, n, table);
    } else {
        fft_general(data, n, table);
    }
}

void ifft(std::vector<float>& data, int n, const std::vector<float>& table) {
    if (is_pow2(n)) {
        ifft_pow2(data, n, table);
        return;
    }
    fft_general(data, n, table);
    const std::size_t floats = 2 * static_cast<std::size_t>(n);
    const auto divisor = static_cast<float>(n);
    for (std::size_t i = 0; i < floats; ++i) {
        data[i] /= divisor;
    }
}

}  // namespace sorvo::audio
