// One transform by itself, as fast as its length allows.
#pragma once

#include "fft/single_kernels.h"

namespace sorvo::audio {

/// All bins of n real samples, as fft_pre_process() and fft() make them.
void real_fft(float* dst, const float* src, int n, const SingleKernels& kernels);

/// n complex samples from n complex bins, as ifft() makes them.
void complex_ifft(float* dst, const float* src, int n, const SingleKernels& kernels);

}  // namespace sorvo::audio
