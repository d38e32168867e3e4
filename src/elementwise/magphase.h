#pragma once

#include <cstddef>
#include <vector>

#include "simd/level.h"

namespace sorvo::audio {

/// Magnitudes to `power` and phases of n complex values: angles atan2f(im, re) in radians, or with
/// `complexPhase` the unit numbers (cos, sin) of these angles, interleaved.
void magphase_1d_core(float* mag, float* phase, const float* src, std::size_t n, float power,
                      bool complexPhase, SimdLevel level = simd_level());

/// The same for mag.size() values.
void magphase_1d(std::vector<float>& mag, std::vector<float>& phase, std::vector<float>& src,
                 float power, bool complexPhase);

}  // namespace sorvo::audio
