// Successive outputs of a filter without feedback, side by side.
#pragma once

#include <cstddef>

#include "simd/dispatch.h"

namespace sorvo::audio {

/// Outputs are computed in multiples of this number.
constexpr std::size_t fir_step_n = 64;

template <class State>
struct FirKernel {
    /// y[i] = State(... State(State(b[m] x[i - m]) + b[m - 1] x[i - m + 1]) ...) + b[0] x[i] for n
    /// outputs; m >= 1. Returns whether all are finite and none is -0.
    bool (*fir_outputs)(double* y, const double* x, const double* b, std::size_t m, std::size_t n);
};

/// A kernel is found by the type of its base.
struct FirKernels : FirKernel<float>, FirKernel<double> {};

SORVO_DECLARE_KERNELS(FirKernels, fir_kernels)

}  // namespace sorvo::audio
