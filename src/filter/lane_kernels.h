// The inner loop of recursive filters: many stretches of a signal at once, one per lane.
#pragma once

#include <array>
#include <cstddef>

#include "util/cpu.h"

namespace sorvo::audio {

constexpr std::size_t filter_lane_n = 32;
/// The most samples that each lane takes per call of a kernel; always a multiple of the unit.
constexpr std::size_t max_filter_row_n = 32;
constexpr std::size_t filter_row_unit = 8;

template <class State, std::size_t state_n>
using LaneStates = std::array<std::array<State, filter_lane_n>, state_n>;

/// Runs row_n samples of every lane through the filter (b and a of state_n + 1 values), state_n
/// being 1 or 2. Lane l begins at src + l * stride, and at dst + l * stride. With `reverse` each
/// lane takes its samples from the last to the first.
template <class Out, class In, class State, std::size_t state_n>
void filter_lane_rows(Out* dst, const In* src, std::size_t row_n, std::ptrdiff_t stride,
                      bool reverse, const double* b, const double* a, LaneStates<State, state_n>& z,
                      CpuLevel level);

}  // namespace sorvo::audio
