#include "elementwise/decibel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace sorvo::audio {
namespace {

constexpr float amin = 1e-10F;

float clamp_to_amin(float x) {
    return x > amin ? x : amin;
}

/// The maximum without NaN; but a NaN first element stays, as nothing compares greater. Taken in
/// lanes that all begin with that element. Which of two zeros comes out is left open.
float maximum(const float* src, std::ptrdiff_t n) {
    constexpr std::ptrdiff_t lane_n = 32;
    std::array<float, lane_n> max;
    max.fill(src[0]);
    std::ptrdiff_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        for (std::ptrdiff_t l = 0; l < lane_n; ++l) {
            max[static_cast<std::size_t>(l)] =
                std::max(max[static_cast<std::size_t>(l)], src[i + l]);
        }
    }
    for (; i < n; ++i) {
        max[0] = std::max(max[0], src[i]);
    }
    return *std::max_element(max.begin(), max.end());
}

}  // namespace

float power_to_db(float x, float ref) {
    return 10.0F * ::log10f(clamp_to_amin(x)) - 10.0F * ::log10f(ref);
}

void convert_power_to_db(float* dst, const float* src, int n, float top_db) {
    const float ref_db = 10.0F * ::log10f(clamp_to_amin(maximum(src, n)));
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
