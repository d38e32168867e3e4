// The kernels that apply a mel filter bank to many frames side by side.
#pragma once

#include <cstddef>

#include "simd/dispatch.h"

namespace sorvo::audio {

/// The weights of one band that are not zero: those of the bins begin ... end - 1.
struct MelBand {
    const float* weights;
    std::size_t begin;
    std::size_t end;
};

struct MelKernels {
    /// dst[m * dst_row + t] = sum over the bins k of band m of src[k * src_row + t] weights[k -
    /// begin], in the order of k from +0, for m < band_n and t < frame_n. Where `src` is finite it
    /// equals the sum over all bins: a sum from +0 is never -0, so zero products change nothing.
    void (*apply_bands)(float* dst, std::size_t dst_row, const float* src, std::size_t src_row,
                        const MelBand* bands, std::size_t band_n, std::size_t frame_n);
    /// True if no value is infinite or NaN.
    bool (*all_finite)(const float* data, std::size_t n);
};

SORVO_DECLARE_KERNELS(MelKernels, mel_kernels)

}  // namespace sorvo::audio
