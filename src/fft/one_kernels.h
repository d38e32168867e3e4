// The kernels of one transform by itself.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fft/one_plan.h"
#include "simd/dispatch.h"

namespace sorvo::audio {

/// All bins of n real elements, or the inverse of n complex ones; dst may overlap src. `work` is
/// room for one.work_n floats, aligned for the widest vectors.
using OneTransform = void (*)(float* dst, const float* src, const FftPlanView& plan,
                              const OnePlanView& one, float* work);

struct OneTransforms {
    OneTransform pow2;     ///< plans with a block_n
    OneTransform general;  ///< other lengths, data whose largest magnitude is far from overflow
    OneTransform literal;  ///< the same for any data
};

struct OneKernels {
    OneTransforms real;
    OneTransforms inverse;

    /// The bit pattern of the largest magnitude, NaN being above infinity.
    std::uint32_t (*largest_magnitude)(const float* data, std::size_t n);
};

SORVO_DECLARE_KERNELS(OneKernels, one_kernels)

}  // namespace sorvo::audio
