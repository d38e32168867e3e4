// The inner loops of the resampler: many outputs at once, one per lane. Lanes are chunks of the
// signal that stand at the same slot of the schedule, so that all of them need the same taps.
#pragma once

#include <cstddef>

#include "resample/tap_groups.h"
#include "simd/dispatch.h"

namespace sorvo::audio {

/// Lanes enough for the widest vectors, and few enough for a window of rows to stay in the first
/// level of the cache.
constexpr std::size_t resample_lane_n = 16;

/// Taps of one output.
constexpr std::size_t resample_tap_n = 65;

/// One sample of every lane, once as it is and once widened.
struct alignas(64) FloatRow {
    float lane[resample_lane_n];
};
struct alignas(64) DoubleRow {
    double lane[resample_lane_n];
};

/// Samples and outputs are turned from lane after lane to row after row in squares, whose sides
/// divide this number.
constexpr std::size_t lane_square_n = 8;

constexpr std::size_t round_up_to_squares(std::size_t n) {
    return (n + lane_square_n - 1) / lane_square_n * lane_square_n;
}

/// Some groups of outputs for all lanes, and what they read.
struct LaneBlock {
    const TapGroups::Group* groups;
    std::size_t all_group_n;  // after the last comes the first again
    const double* taps;
    std::size_t first_group;
    std::size_t group_n;
    std::size_t output_n;  // of these groups

    const float* samples;  // [lane][sample_stride]: the samples of the new rows
    std::size_t sample_stride;
    DoubleRow* rows;  // the rows that are there, then room for the new ones
    std::size_t old_row_n;
    std::size_t new_row_n;  // a multiple of lane_square_n
    bool old_finite;        // whether all samples of the old rows are finite
    bool new_finite;        // result: those of the new ones

    FloatRow* scratch;  // room for new_row_n rows, and for output_n rounded up to lane_square_n
    float* results;     // result: the outputs [lane][result_stride], room for output_n rounded up
    std::size_t result_stride;

    // Where the caller will read and write next, [lane][stride]: so many streams in short runs are
    // more than the processor foresees.
    const float* next_samples;
    std::size_t next_sample_stride;
    const float* next_results;
    std::size_t next_result_stride;
};

struct ResampleKernels {
    void (*run_lanes)(LaneBlock& block);
};

SORVO_DECLARE_KERNELS(ResampleKernels, resample_kernels)

}  // namespace sorvo::audio
