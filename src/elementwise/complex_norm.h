#pragma once

#include <cstddef>
#include <vector>

namespace sorvo::audio {

/// dst[i] = |z_i|^power = powf(im im + re re, power / 2) for n interleaved complex values of `src`;
/// no square root is taken first. Nothing for n <= 0. `dst` may be `src` itself.
void complex_norm_1d_core(float* dst, const float* src, int n, float power);

/// The same for dst.size() values.
void complex_norm_1d(std::vector<float>& dst, std::vector<float>& src, float power);

/// In place on interleaved values: (re, im) becomes (|z|^power, 0).
void complex_norm_1d(std::vector<float>& data, float power);

/// Magnitudes to `power` and phases of n complex values: angles atan2f(im, re) in radians, or with
/// `complexPhase` the unit numbers (cos, sin) of these angles, interleaved.
void magphase_1d_core(float* mag, float* phase, const float* src, std::size_t n, float power,
                      bool complexPhase);

/// The same for mag.size() values.
void magphase_1d(std::vector<float>& mag, std::vector<float>& phase, std::vector<float>& src,
                 float power, bool complexPhase);

}  // namespace sorvo::audio
