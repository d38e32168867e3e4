// Elementary functions of one number, correctly rounded and slow: computed in numbers of twice a
// double's precision. For floats that decides every rounding; for doubles, which leave some 47 bits
// to decide it, all but one in 10^14. The same on every processor.
#pragma once

namespace sorvo::audio {

float exact_log10f(float x);
float exact_log1pf(float x);
float exact_atan2f(float y, float x);

double exact_log10(double x);

/// For magnitudes below 2^30.
double exact_sin(double x);
double exact_cos(double x);

}  // namespace sorvo::audio
