#pragma once

namespace sorvo::audio {

/// dst[i] = (src[i] - mean) / deviation, with the one-pass population variance
/// sum(x^2) / n - mean^2 in float. A variance that rounding makes negative gives NaN throughout; a
/// deviation of exactly 0 multiplies by 1e16 instead. `dst` may be `src`.
void standardize(float* dst, const float* src, int n);

}  // namespace sorvo::audio
