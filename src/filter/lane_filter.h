#pragma once

#include <cstddef>

#include "filter/coefficients.h"
#include "simd/level.h"

namespace sorvo::audio {

/// Fewer samples are not worth the lanes.
constexpr std::size_t min_lane_filter_n = 1056;

/// As run_filter_plain() for one or two state values, with stretches of the signal side by side if
/// there are samples enough for the filter.
///
/// Each stretch starts from a guess of its state: that which comes out of so many samples before it
/// that the filter should have forgotten where it started. Rounding makes the states of two runs
/// over the same samples equal in every bit. Where the stretch before ends in the guessed state,
/// everything that followed from the guess is what the filter does; where it does not, samples are
/// filtered one by one until the states meet. So the result is the same in any case, and only the
/// speed differs.
template <class Out, class In, class State>
void filter_lanes(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
                  bool reverse, SimdLevel level);

}  // namespace sorvo::audio
