// The inner loop of filters without feedback.
#pragma once

#include <cstddef>

#include "util/cpu.h"

namespace sorvo::audio {

/// Outputs are computed in multiples of this number.
constexpr std::size_t fir_step_n = 64;

/// y[i] = State(... State(State(b[m] x[i - m]) + b[m - 1] x[i - m + 1]) ...) + b[0] x[i] for n
/// outputs, a multiple of fir_step_n; m >= 1. Returns whether all are finite and none is zero.
template <class State>
bool fir_outputs(double* y, const double* x, const double* b, std::size_t m, std::size_t n,
                 CpuLevel level);

}  // namespace sorvo::audio
