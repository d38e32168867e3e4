// The definition of filtering: sample by sample.
#pragma once

#include <cstddef>

#include "filter/coefficients.h"

namespace sorvo::audio {

/// Filters n samples from and to the state z of N - 1 values, as linerfilter() describes it. `dst`
/// may equal `src`.
template <class Out, class In, class State>
void run_difference_equation(Out* dst, const In* src, const FilterCoefficients& coef, State* z,
                             std::size_t n, bool reverse);

/// What one sample and its output make of the state (of at least one value).
template <class State>
void update_state(const FilterCoefficients& coef, State* z, double x, double y);

}  // namespace sorvo::audio
