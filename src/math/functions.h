// The functions of the C library that the library computes with, of one number: those of the C
// library at hand, or with SORVO_AUDIO_MATH=own this library's, which give the same on every
// system. For arrays there is more in math/arrays.h and math/power.h.
#pragma once

namespace sorvo::audio::math {

/// For magnitudes below 16.
float sinf(float x);
float cosf(float x);

float log10f(float x);
float powf(float base, float exponent);

/// For magnitudes below 2^30.
double sin(double x);
double cos(double x);

double log10(double x);

}  // namespace sorvo::audio::math
