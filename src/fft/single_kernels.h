// The kernels of a single transform.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fft/fft_plan.h"
#include "simd/dispatch.h"

namespace sorvo::audio {

/// All bins of n real elements, or the inverse of n complex ones; dst may overlap src. `work` is
/// room for plan.work_n floats, aligned for the widest packs.
struct SingleTransforms {
    /// Powers of two, plans with a block_n.
    void (*pow2)(float* dst, const float* src, const FftPlanView& plan, float* work);
    /// Other lengths; only for data whose largest magnitude is far from overflow.
    void (*general)(float* dst, const float* src, const FftPlanView& plan, float* work);
};

struct SingleKernels {
    SingleTransforms real;
    SingleTransforms inverse;

    /// The bit pattern of the largest magnitude, NaN being above infinity.
    std::uint32_t (*largest_magnitude)(const float* data, std::size_t n);
};

SORVO_DECLARE_KERNELS(SingleKernels, single_kernels)

}  // namespace sorvo::audio
