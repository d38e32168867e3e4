#pragma once

#include "simd/level.h"

namespace sorvo::audio {

/// 10 log10f(max(x, 1e-10)) - 10 log10f(ref); a NaN x counts as 1e-10. `ref` is not clamped.
float power_to_db(float x, float ref);

/// n powers in decibels relative to their maximum (at least 1e-10). With top_db >= 0 values below
/// -top_db become -top_db. `dst` may be `src`.
void convert_power_to_db(float* dst, const float* src, int n, float top_db,
                         SimdLevel level = simd_level());

}  // namespace sorvo::audio
