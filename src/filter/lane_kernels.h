// The inner loop of recursive filters: many stretches of a signal at once, one per lane.
#pragma once

#include <array>
#include <cstddef>

#include "util/cpu.h"

namespace sorvo::audio {

constexpr std::size_t filter_lane_n = 32;
/// Samples that each lane takes per call of a kernel.
constexpr std::size_t filter_row_n = 32;

template <class State, std::size_t state_n>
using LaneStates = std::array<std::array<State, filter_lane_n>, state_n>;

/// Runs filter_row_n samples of every lane through the filter (b and a of state_n + 1 values),
/// state_n being 1 or 2. Lane l begins at src + l * stride; dst, with the same layout, may be null.
/// With `reverse` each lane takes its samples from the last to the first.
template <class Out, class In, class State, std::size_t state_n>
void filter_lane_rows(Out* dst, const In* src, std::ptrdiff_t stride, bool reverse, const double* b,
                      const double* a, LaneStates<State, state_n>& z, CpuLevel level);

}  // namespace sorvo::audio
