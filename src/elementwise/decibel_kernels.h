#pragma once

#include <cstddef>

#include "math/form.h"
#include "simd/dispatch.h"

namespace sorvo::audio {

struct DecibelKernels {
    /// The maximum of n > 0 floats without NaN; but a NaN first element stays, as nothing compares
    /// greater. Which of two zeros comes out is left open.
    float (*maximum)(const float* src, std::size_t n);

    /// dst[i] = 10 log10f(max(src[i], amin)) - ref_db, at least `floor`, in the forms
    /// MathForm::rounded and MathForm::classic. `dst` may be `src`.
    void (*decibels[2])(float* dst, const float* src, std::size_t n, float ref_db, float floor);
};

constexpr float amin = 1e-10F;

SORVO_DECLARE_KERNELS(DecibelKernels, decibel_kernels)

}  // namespace sorvo::audio
