#include "elementwise/decibel.h"

#include <cmath>
#include <cstddef>

namespace sorvo::audio {
namespace {

constexpr float amin = 1e-10F;

float clamp_to_amin(float x) {
    return x > amin ? x : amin;
}

}  // namespace

float power_to_db(float x, float ref) {
    return 10.0F * ::log10f(clamp_to_amin(x)) - 10.0F * ::log10f(ref);
}

void convert_power_to_db(float* dst, const float* src, int n, float top_db) {
    // A NaN first element stays the maximum: nothing compares greater.
    float max = src[0];
    for (std::ptrdiff_t i = 1; i < n; ++i) {
        max = src[i] > max ? src[i] : max;
    }
    const float ref_db = 10.0F * ::log10f(clamp_to_amin(max));
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        dst[i] = 10.0F * ::log10f(clamp_to_amin(src[i])) - ref_db;
    }
    if (top_db >= 0.0F) {
        const float floor = 0.0F - top_db;
        for (std::ptrdiff_t i = 0; i < n; ++i) {
            dst[i] = floor > dst[i] ? floor : dst[i];
        }
    }
}

}  // namespace sorvo::audio
