#include "mel/mel_scale.h"

#include <cmath>

#include "math/functions.h"

namespace sorvo::audio {
namespace {

constexpr float hz_per_mel = 66.66666412353516F;      // 200 / 3
constexpr float log_step = 0.06875177472829819F;      // log(6.4) / 27
constexpr float log_start_mel = 15.000000953674316F;  // 1000 / hz_per_mel

}  // namespace

// The two directions are not exact inverses of each other: the way up adds exactly 15, the way down
// subtracts the float just above it. Models were trained on banks that depend on both bit for bit.

float hz_to_mel_slaney(float hz) {
    if (1000.0F > hz) {
        return hz * 0.015F;
    }
    const float ratio = hz / 1000.0F;
    return static_cast<float>(::log(static_cast<double>(ratio)) / static_cast<double>(log_step) +
                              15.0);
}

float mel_to_hz_slaney(float mel) {
    if (mel >= log_start_mel) {
        const float exponent = (mel + -log_start_mel) * log_step;
        return static_cast<float>(::exp(static_cast<double>(exponent)) * 1000.0);
    }
    return 0.0F + mel * hz_per_mel;  // the sum turns -0 into +0
}

float hz_to_mel_htk(float hz) {
    return 2595.0F * math::log10f(1.0F + hz / 700.0F);
}

float mel_to_hz_htk(float mel) {
    const float exponent = mel * 0.0003853564558085054F;  // 1 / 2595
    return static_cast<float>(700.0 * (::pow(10.0, static_cast<double>(exponent)) + (-1.0)));
}

}  // namespace sorvo::audio
