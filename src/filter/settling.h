#pragma once

#include <cstddef>
#include <limits>

#include "filter/coefficients.h"

namespace sorvo::audio {

/// settling_n() of a filter that keeps its state for ever, or of which nothing is known.
constexpr std::size_t never_settles = std::numeric_limits<std::size_t>::max();

/// About how many samples it takes until the states of two runs of a filter over the same signal,
/// kept as State, have become equal in every bit: nine times out of ten they take no longer.
/// Where the filter forgets, rounding makes the last differences vanish. Never throws.
template <class State>
std::size_t settling_n(const FilterCoefficients& coef);

}  // namespace sorvo::audio
