// The inner loops of filters: many samples at once.
#pragma once

#include <cstddef>

#include "simd/dispatch.h"

namespace sorvo::audio {

constexpr std::size_t filter_lane_n = 32;
/// The most samples that each lane takes per call of a kernel; always a multiple of the unit.
constexpr std::size_t max_filter_row_n = 32;
constexpr std::size_t filter_row_unit = 8;

/// Recursive filters, with one stretch of a signal per lane.
template <class Out, class In, class State>
struct LaneFilterKernels {
    /// Runs row_n samples of every lane through the filter. Lane l begins at src + l * stride, and
    /// at dst + l * stride. With `reverse` each lane takes its samples from the last to the first.
    /// The states are z[k * filter_lane_n + l]. In the place n - 1 for n state values; b and a then
    /// have n + 1.
    void (*run_rows[2])(Out* dst, const In* src, std::size_t row_n, std::ptrdiff_t stride,
                        bool reverse, const double* b, const double* a, State* z);
};

/// Outputs of a filter without feedback are computed in multiples of this number.
constexpr std::size_t fir_step_n = 64;

template <class State>
struct FirKernels {
    /// y[i] = State(... State(State(b[m] x[i - m]) + b[m - 1] x[i - m + 1]) ...) + b[0] x[i] for n
    /// outputs; m >= 1. Returns whether all are finite and none is zero.
    bool (*fir_outputs)(double* y, const double* x, const double* b, std::size_t m, std::size_t n);
};

/// A kernel is found by the types of its base.
struct FilterKernels : LaneFilterKernels<float, float, float>,
                       LaneFilterKernels<double, float, double>,
                       LaneFilterKernels<double, double, double>,
                       LaneFilterKernels<float, double, double>,
                       FirKernels<float>,
                       FirKernels<double> {};

SORVO_DECLARE_KERNELS(FilterKernels, filter_kernels)

}  // namespace sorvo::audio
