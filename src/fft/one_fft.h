// One transform by itself, as fast as its length allows.
#pragma once

#include "simd/level.h"

namespace sorvo::audio {

/// All bins of n real samples, as fft_pre_process() and fft() make them. dst may overlap src.
void real_fft(float* dst, const float* src, int n, SimdLevel level = simd_level());

/// n complex samples from n complex bins, as ifft() makes them. dst may overlap src.
void complex_ifft(float* dst, const float* src, int n, SimdLevel level = simd_level());

}  // namespace sorvo::audio
