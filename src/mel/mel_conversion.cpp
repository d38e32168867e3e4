#include "mel/mel_conversion.h"

#include <algorithm>
#include <cstddef>

namespace sorvo::audio {

void convert_freq_to_mel_1d(std::vector<float>& dst, const std::vector<float>& src,
                            const std::vector<std::vector<float>>& fb, int mel_n) {
    for (std::ptrdiff_t m = 0; m < mel_n; ++m) {
        const std::vector<float>& row = fb[static_cast<std::size_t>(m)];
        float sum = 0.0F;
        for (std::size_t k = 0; k < row.size(); ++k) {
            sum += row[k] * src[k];
        }
        dst[static_cast<std::size_t>(m)] = sum;
    }
}

void convert_freq_to_mel_2d(float* dst, const float* src, const float* fb, int freq_n, int frame_n,
                            int mel_n) {
    constexpr std::ptrdiff_t tile_n = 64;
    const std::ptrdiff_t stride = frame_n;
    for (std::ptrdiff_t t = 0; t < frame_n; t += tile_n) {
        const std::ptrdiff_t n = std::min(tile_n, stride - t);
        for (std::ptrdiff_t m = 0; m < mel_n; ++m) {
            float sums[tile_n] = {};
            for (std::ptrdiff_t k = 0; k < freq_n; ++k) {
                const float weight = fb[m * freq_n + k];
                const float* const spectrum = src + k * stride + t;
                for (std::ptrdiff_t i = 0; i < n; ++i) {
                    sums[i] += spectrum[i] * weight;
                }
            }
            std::copy_n(sums, n, dst + m * stride + t);
        }
    }
}

}  // namespace sorvo::audio
