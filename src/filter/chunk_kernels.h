// The difference equation of a recursive filter for chunks of a signal side by side, one per lane.
#pragma once

#include <cstddef>

#include "simd/dispatch.h"

namespace sorvo::audio {

constexpr std::size_t chunk_lane_n = 32;
/// The most samples that each lane takes per call of a kernel; always a multiple of the unit.
constexpr std::size_t max_chunk_row_n = 32;
constexpr std::size_t chunk_row_unit = 8;

/// One sample of every lane.
template <class T>
struct alignas(64) LaneRow {
    T lane[chunk_lane_n];
};

/// Filters row_n samples of every lane. Lane l begins at src + l * stride, and at dst + l * stride.
/// With `reverse` each lane takes its samples from the last to the first.
template <class Out, class In, class State>
struct ChunkRows {
    Out* dst;
    const In* src;
    std::size_t row_n;
    std::ptrdiff_t stride;
    bool reverse;
    const double* b;  ///< and a: one more than state values
    const double* a;
    State* z;              ///< [state value][lane]
    LaneRow<In>* in_rows;  ///< room for max_chunk_row_n rows of inputs, and of outputs
    LaneRow<Out>* out_rows;
    const bool* is_idle;  ///< of each lane: takes zeros for its samples; null: of no lane
};

template <class Out, class In, class State>
using ChunkKernel = void (*)(const ChunkRows<Out, In, State>& rows);

template <class Out, class In, class State>
struct ChunkKernelsOf {
    ChunkKernel<Out, In, State> run_rows[2];  ///< in the place n - 1 for n state values
};

/// Kernels are found by the types of their base.
struct ChunkKernels : ChunkKernelsOf<float, float, float>,
                      ChunkKernelsOf<double, float, double>,
                      ChunkKernelsOf<double, double, double>,
                      ChunkKernelsOf<float, double, double> {};

SORVO_DECLARE_KERNELS(ChunkKernels, chunk_kernels)

}  // namespace sorvo::audio
