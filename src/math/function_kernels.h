#pragma once

#include <cstddef>

#include "math/form.h"
#include "simd/dispatch.h"

namespace sorvo::audio {

/// Functions of n elements. `dst` may be `src`, except of unit_numbers.
struct FunctionKernels {
    using Kernel = void (*)(float* dst, const float* src, std::size_t n);

    // In the forms MathForm::rounded and MathForm::classic.
    Kernel log10f[2];
    Kernel log1pf[2];
    Kernel angles[2];  ///< atan2f(im, re) of interleaved complex numbers

    Kernel unit_numbers;  ///< (cosf, sinf) of magnitudes below 16, interleaved
};

SORVO_DECLARE_KERNELS(FunctionKernels, function_kernels)

/// That of two forms which is in use.
inline FunctionKernels::Kernel in_form(const FunctionKernels::Kernel (&kernels)[2], MathForm form) {
    return kernels[form == MathForm::rounded ? 0 : 1];
}

}  // namespace sorvo::audio
