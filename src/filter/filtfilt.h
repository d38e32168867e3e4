#pragma once

#include "simd/level.h"

namespace sorvo::audio {

/// Zero-phase filtering: forward, then backward, each pass from its steady state scaled by its
/// first sample, with everything between input and output in double. The signal is first extended
/// by pad_len samples at both ends: pad_type 1 odd, 2 reflected, 3 constant; 0 not at all (pad_len
/// is ignored). Throws SorvoInvalidArgument for another pad_type, and where an odd or reflected
/// extension would be as long as the signal or longer.
void filtfilt(float* dst, const float* src, const float* n_coef, const float* d_coef, int dst_n,
              int src_n, int n_coef_n, int d_coef_n, int pad_type, int pad_len,
              SimdLevel level = simd_level());

}  // namespace sorvo::audio
