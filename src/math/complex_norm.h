#pragma once

#include <cstddef>
#include <vector>

#include "simd/level.h"

namespace sorvo::audio {

/// dst[i] = |z_i|^power = powf(im im + re re, power / 2) for n interleaved complex values of `src`;
/// no square root is taken first. Nothing for n <= 0. `dst` may be `src` itself.
void complex_norm_1d_core(float* dst, const float* src, int n, float power,
                          SimdLevel level = simd_level());

/// The same for dst.size() values.
void complex_norm_1d(std::vector<float>& dst, std::vector<float>& src, float power);

/// In place on interleaved values: (re, im) becomes (|z|^power, 0).
void complex_norm_1d(std::vector<float>& data, float power);

}  // namespace sorvo::audio
