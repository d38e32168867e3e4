#include "elementwise/complex_norm.h"

#include <cmath>
#include <complex>
#include <cstddef>

namespace sorvo::audio {
namespace {

float norm(float re, float im, float half_power) {
    return ::powf(im * im + re * re, half_power);
}

}  // namespace

void complex_norm_1d_core(float* dst, const float* src, int n, float power) {
    const float half_power = power * 0.5F;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        dst[i] = norm(src[2 * i], src[2 * i + 1], half_power);
    }
}

void complex_norm_1d(std::vector<float>& dst, std::vector<float>& src, float power) {
    const float half_power = power * 0.5F;
    for (std::size_t i = 0; i < dst.size(); ++i) {
        dst[i] = norm(src[2 * i], src[2 * i + 1], half_power);
    }
}

void complex_norm_1d(std::vector<float>& data, float power) {
    const float half_power = power * 0.5F;
    for (std::size_t i = 0; i + 1 < data.size(); i += 2) {
        data[i] = norm(data[i], data[i + 1], half_power);
        data[i + 1] = 0.0F;
    }
}

void magphase_1d(std::vector<float>& mag, std::vector<float>& phase, std::vector<float>& src,
                 float power, bool complexPhase) {
    complex_norm_1d(mag, src, power);
    const std::size_t n = complexPhase ? mag.size() : phase.size();
    for (std::size_t i = 0; i < n; ++i) {
        const float angle = ::atan2f(src[2 * i + 1], src[2 * i]);
        if (complexPhase) {
            const std::complex<float> unit = std::exp(std::complex<float>(0.0F, angle));
            phase[2 * i] = unit.real();
            phase[2 * i + 1] = unit.imag();
        } else {
            phase[i] = angle;
        }
    }
}

}  // namespace sorvo::audio
