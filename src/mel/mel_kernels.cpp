#include "mel/mel_kernels.h"

#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// One band of pack_n packs of frames.
template <std::size_t pack_n>
SORVO_INLINE void apply_band(float* dst, const float* src, std::size_t src_row,
                             const MelBand& band) {
    FloatVec sums[pack_n] = {};
    const float* values = src + band.begin * src_row;
    const std::size_t n = band.end - band.begin;
    for (std::size_t k = 0; k < n; ++k, values += src_row) {
        for (std::size_t i = 0; i < pack_n; ++i) {
            sums[i] += load(values + i * lane_n) * band.weights[k];
        }
    }
    for (std::size_t i = 0; i < pack_n; ++i) {
        store(dst + i * lane_n, sums[i]);
    }
}

template <std::size_t pack_n>
SORVO_INLINE std::size_t apply_to_packs(float* dst, std::size_t dst_row, const float* src,
                                        std::size_t src_row, const MelBand* bands,
                                        std::size_t band_n, std::size_t t, std::size_t frame_n) {
    for (; t + pack_n * lane_n <= frame_n; t += pack_n * lane_n) {
        for (std::size_t m = 0; m < band_n; ++m) {
            apply_band<pack_n>(dst + m * dst_row + t, src + t, src_row, bands[m]);
        }
    }
    return t;
}

void apply_bands(float* dst, std::size_t dst_row, const float* src, std::size_t src_row,
                 const MelBand* bands, std::size_t band_n, std::size_t frame_n) {
    std::size_t t = 0;
    t = apply_to_packs<4>(dst, dst_row, src, src_row, bands, band_n, t, frame_n);
    t = apply_to_packs<1>(dst, dst_row, src, src_row, bands, band_n, t, frame_n);
    for (; t < frame_n; ++t) {
        for (std::size_t m = 0; m < band_n; ++m) {
            const MelBand& band = bands[m];
            float sum = 0.0F;
            for (std::size_t k = band.begin; k < band.end; ++k) {
                sum += src[k * src_row + t] * band.weights[k - band.begin];
            }
            dst[m * dst_row + t] = sum;
        }
    }
}

bool all_finite(const float* data, std::size_t n) {
    FloatVec sums[2] = {};  // x - x is 0, or NaN where x is not finite
    std::size_t i = 0;
    for (; i + 2 * lane_n <= n; i += 2 * lane_n) {
        for (std::size_t j = 0; j < 2; ++j) {
            const FloatVec x = load(data + i + j * lane_n);
            sums[j] += x - x;
        }
    }
    float sum = 0.0F;
    for (; i < n; ++i) {
        sum += data[i] - data[i];
    }
    float lanes[lane_n];
    store(lanes, sums[0] + sums[1]);
    for (const float lane : lanes) {
        sum += lane;
    }
    return sum == 0.0F;
}

}  // namespace

const MelKernels mel_kernels = {apply_bands, all_finite};

}  // namespace sorvo::audio::SORVO_LEVEL
