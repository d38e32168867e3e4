// The kernels of a single transform.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fft/fft_plan.h"
#include "util/cpu.h"

namespace sorvo::audio {

/// Floats of working storage that a single transform takes at most; aligned.
constexpr std::size_t single_work_n = 4 * max_planned_n;

/// The part of it for the end of the input.
constexpr std::size_t single_tail_n = 4 * widest_lane_n;

struct SingleKernels {
    /// All bins of n real elements, and the inverse of n complex ones: plans of a power of two with
    /// a block_n. A zero may have the wrong sign. The result is the bit pattern of the largest
    /// magnitude of `src`, NaN being above infinity: only where it is far from overflow do the
    /// results count.
    std::uint32_t (*real_pow2)(float* dst, const float* src, const FftPlanView& plan, float* work);
    std::uint32_t (*inverse_pow2)(float* dst, const float* src, const FftPlanView& plan,
                                  float* work);

    /// The same for other lengths, exactly; dst may overlap src. Only for data whose largest
    /// magnitude is far from overflow.
    void (*real_general)(float* dst, const float* src, const FftPlanView& plan, float* work);
    void (*inverse_general)(float* dst, const float* src, const FftPlanView& plan, float* work);

    /// The bit pattern of the largest magnitude.
    std::uint32_t (*largest_magnitude)(const float* data, std::size_t n);

    /// For n a multiple of 64.
    bool (*any_zero)(const float* data, std::size_t n);
};

const SingleKernels& single_kernels(CpuLevel level);

extern const SingleKernels single_kernels_baseline;
extern const SingleKernels single_kernels_avx2;
extern const SingleKernels single_kernels_avx512;

}  // namespace sorvo::audio
