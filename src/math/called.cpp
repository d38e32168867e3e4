#include "math/called.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace sorvo::audio {

void call_log10f(float* dst, const float* src, std::size_t n) {
    std::transform(src, src + n, dst, [](float x) { return ::log10f(x); });
}

void call_log1pf(float* dst, const float* src, std::size_t n) {
    std::transform(src, src + n, dst, [](float x) { return ::log1pf(x); });
}

void call_atan2f(float* dst, const float* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        dst[i] = ::atan2f(src[2 * i + 1], src[2 * i]);
    }
}

void call_cexpf(float* dst, const float* src, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const std::complex<float> unit = std::exp(std::complex<float>(0.0F, src[i]));
        dst[2 * i] = unit.real();
        dst[2 * i + 1] = unit.imag();
    }
}

}  // namespace sorvo::audio
