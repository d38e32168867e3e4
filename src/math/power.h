#pragma once

#include <cstddef>

#include "simd/level.h"

namespace sorvo::audio {

/// dst[i] = powf(src[i], exponent) for n squared magnitudes (any floats but signalling NaN), the
/// same bits at every level. Exponents 1, 0.5 and 0 cost little more than a copy, any other a
/// library call per element. `dst` may be `src`.
void raise_to_power(float* dst, const float* src, std::size_t n, float exponent,
                    SimdLevel level = simd_level());

}  // namespace sorvo::audio
