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

/// dst[m * dst_step + t] = sum over all bins k of src[k * src_step + t] and the weights of band m,
/// in the order of k from +0, for m < band_n and t < frame_n.
struct MelJob {
    float* dst;
    std::size_t dst_step;
    const float* src;
    std::size_t src_step;
    std::size_t freq_n;
    const MelBand* bands;
    std::size_t band_n;
    std::size_t frame_n;
};

/// Floats of working storage for values that may not be finite.
constexpr std::size_t outside_n(std::size_t freq_n) {
    return 2 * (freq_n + 1) * 16;
}

struct MelKernels {
    /// Finite values only: the zero products outside a band change no sum, as one that starts at +0
    /// is never -0, and are left out.
    void (*apply_bands)(const MelJob& job);
    /// Any values: what is not finite makes these products NaN. `outside` has room for outside_n()
    /// floats.
    void (*apply_bands_to_any)(const MelJob& job, float* outside);
    /// True if no value is infinite or NaN.
    bool (*all_finite)(const float* data, std::size_t n);
};

SORVO_DECLARE_KERNELS(MelKernels, mel_kernels)

}  // namespace sorvo::audio
