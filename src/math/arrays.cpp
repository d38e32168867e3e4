#include "math/arrays.h"

#include "math/called.h"
#include "math/function_kernels.h"

namespace sorvo::audio {

void take_log1p(float* dst, const float* src, std::size_t n, SimdLevel level) {
    const MathForm form = log1pf_form();
    const auto kernel =
        form == MathForm::called ? call_log1pf : in_form(function_kernels(level).log1pf, form);
    kernel(dst, src, n);
}

void take_angles(float* dst, const float* src, std::size_t n, SimdLevel level) {
    const MathForm form = atan2f_form();
    const auto kernel =
        form == MathForm::called ? call_atan2f : in_form(function_kernels(level).angles, form);
    kernel(dst, src, n);
}

void take_unit_numbers(float* dst, const float* src, std::size_t n, SimdLevel level) {
    const auto kernel =
        sincosf_form() == MathForm::called ? call_cexpf : function_kernels(level).unit_numbers;
    kernel(dst, src, n);
}

}  // namespace sorvo::audio
