// Functions of the C library for arrays: in lanes, in the form that gives what it gives.
#pragma once

#include <cstddef>

#include "simd/level.h"

namespace sorvo::audio {

/// dst[i] = log1pf(src[i]). `dst` may be `src`.
void take_log1p(float* dst, const float* src, std::size_t n, SimdLevel level = simd_level());

/// dst[i] = atan2f(im, re) of the interleaved complex numbers `src`.
void take_angles(float* dst, const float* src, std::size_t n, SimdLevel level = simd_level());

/// The numbers of modulus 1 with these angles, interleaved: cexpf(i src[i]), for magnitudes
/// below 16.
void take_unit_numbers(float* dst, const float* src, std::size_t n, SimdLevel level = simd_level());

}  // namespace sorvo::audio
