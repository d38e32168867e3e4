#include "math/power.h"

#include <algorithm>

#include "math/functions.h"
#include "math/root_kernels.h"

namespace sorvo::audio {

void raise_to_power(float* dst, const float* src, std::size_t n, float exponent, SimdLevel level) {
    if (exponent == 1.0F) {
        std::copy_n(src, dst == src ? 0 : n, dst);
    } else if (exponent == 0.5F) {
        root_kernels(level).take_roots(dst, src, n);
    } else if (exponent == 0.0F) {
        std::fill_n(dst, n, 1.0F);
    } else {
        std::transform(src, src + n, dst, [exponent](float x) { return math::powf(x, exponent); });
    }
}

}  // namespace sorvo::audio
