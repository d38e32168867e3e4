#include "elementwise/decibel.h"

#include <cstddef>
#include <limits>

#include "elementwise/decibel_kernels.h"
#include "math/functions.h"

namespace sorvo::audio {
namespace {

float clamp_to_amin(float x) {
    return x > amin ? x : amin;
}

}  // namespace

float power_to_db(float x, float ref) {
    return 10.0F * math::log10f(clamp_to_amin(x)) - 10.0F * math::log10f(ref);
}

void convert_power_to_db(float* dst, const float* src, int n, float top_db, SimdLevel level) {
    const auto count = static_cast<std::size_t>(n);
    const DecibelKernels& kernels = decibel_kernels(level);
    const float ref = clamp_to_amin(kernels.maximum(src, count));
    const float floor = top_db >= 0.0F ? 0.0F - top_db : -std::numeric_limits<float>::infinity();
    const MathForm form = log10f_form();
    if (form != MathForm::called) {
        kernels.decibels[form == MathForm::rounded ? 0 : 1](dst, src, count,
                                                            10.0F * math::log10f(ref), floor);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const float db = power_to_db(src[i], ref);
        dst[i] = floor > db ? floor : db;
    }
}

}  // namespace sorvo::audio
