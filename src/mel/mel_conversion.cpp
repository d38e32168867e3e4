#include "mel/mel_conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// Frames that are looked through and then converted: few enough to be in the cache still.
constexpr std::size_t block_n = 512;

}  // namespace

MelBand nonzero_band(const float* weights, std::size_t n) {
    std::size_t begin = 0;
    while (begin < n && weights[begin] == 0.0F) {
        ++begin;
    }
    std::size_t end = n;
    while (end > begin && weights[end - 1] == 0.0F) {
        --end;
    }
    return {weights + begin, begin, end};
}

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
                            int mel_n, SimdLevel level) {
    const MelKernels& kernels = mel_kernels(level);
    const auto row_n = static_cast<std::size_t>(frame_n);
    const auto weight_n = static_cast<std::size_t>(freq_n);
    auto bands = make_zeros<MelBand>(static_cast<std::uint64_t>(mel_n));
    for (std::size_t m = 0; m < bands.size(); ++m) {
        bands[m] = nonzero_band(fb + m * weight_n, weight_n);
    }
    auto outside = make_zeros<float>(outside_n(weight_n));
    for (std::size_t t = 0; t < row_n; t += block_n) {
        const std::size_t n = std::min(block_n, row_n - t);
        bool finite = true;
        for (std::size_t k = 0; k < weight_n && finite; ++k) {
            finite = kernels.all_finite(src + k * row_n + t, n);
        }
        const MelJob job = {dst + t,  row_n,        src + t,      row_n,
                            weight_n, bands.data(), bands.size(), n};
        if (finite) {
            kernels.apply_bands(job);
        } else {
            kernels.apply_bands_to_any(job, outside.data());
        }
    }
}

}  // namespace sorvo::audio
