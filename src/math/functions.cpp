#include "math/functions.h"

#if defined(SORVO_AUDIO_OWN_MATH)
#include "math/exact.h"
#include "math/function_kernels.h"
#include "math/stepped_powf.h"
#else
#include <cmath>
#endif

namespace sorvo::audio::math {

#if defined(SORVO_AUDIO_OWN_MATH)

float cosf(float x) {
    float unit[2];
    function_kernels(simd_level()).unit_numbers(unit, &x, 1);
    return unit[0];
}

float sinf(float x) {
    float unit[2];
    function_kernels(simd_level()).unit_numbers(unit, &x, 1);
    return unit[1];
}

float log10f(float x) {
    return exact_log10f(x);
}

float powf(float base, float exponent) {
    return stepped_powf(base, exponent);
}

double sin(double x) {
    return exact_sin(x);
}

double cos(double x) {
    return exact_cos(x);
}

double log10(double x) {
    return exact_log10(x);
}

#else

float sinf(float x) {
    return ::sinf(x);
}

float cosf(float x) {
    return ::cosf(x);
}

float log10f(float x) {
    return ::log10f(x);
}

float powf(float base, float exponent) {
    return ::powf(base, exponent);
}

double sin(double x) {
    return ::sin(x);
}

double cos(double x) {
    return ::cos(x);
}

double log10(double x) {
    return ::log10(x);
}

#endif

}  // namespace sorvo::audio::math
