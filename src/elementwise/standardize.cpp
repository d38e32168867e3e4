#include "elementwise/standardize.h"

#include <cmath>
#include <cstddef>

namespace sorvo::audio {

void standardize(float* dst, const float* src, int n) {
    const float inv = 1.0F / static_cast<float>(n);
    float sum = 0.0F;
    float sum_of_squares = 0.0F;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        sum += src[i];
        sum_of_squares += src[i] * src[i];
    }
    const float mean = sum * inv;
    const float variance = sum_of_squares * inv - mean * mean;
    const float deviation = ::sqrtf(variance);
    const float scale = deviation == 0.0F ? 1e16F : 1.0F / deviation;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        dst[i] = (src[i] - mean) * scale;
    }
}

}  // namespace sorvo::audio
