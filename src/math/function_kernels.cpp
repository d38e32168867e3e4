#include "math/function_kernels.h"

#include "math/atan2f.h"
#include "math/log10f.h"
#include "math/log1pf.h"
#include "math/sincosf.h"
#include "simd/each_vector.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

template <MathForm form>
void take_log10f(float* dst, const float* src, std::size_t n) {
    for_each_vector<1, 1>(dst, src, n, [](float* to, const float* from) SORVO_INLINE_BODY {
        store(to, log10f_of<form>(load(from)));
    });
}

template <MathForm form>
void take_log1pf(float* dst, const float* src, std::size_t n) {
    for_each_vector<1, 1>(dst, src, n, [](float* to, const float* from) SORVO_INLINE_BODY {
        store(to, log1pf_of<form>(load(from)));
    });
}

template <MathForm form>
void take_angles(float* dst, const float* src, std::size_t n) {
    for_each_vector<1, 2>(dst, src, n, [](float* to, const float* from) SORVO_INLINE_BODY {
        FloatVec re;
        FloatVec im;
        unzip(re, im, load(from), load(from + lane_n));
        store(to, atan2f_of<form>(im, re));
    });
}

void take_unit_numbers(float* dst, const float* src, std::size_t n) {
    for_each_vector<2, 1>(dst, src, n, [](float* to, const float* from) SORVO_INLINE_BODY {
        const ComplexVec unit = unit_number(load(from));
        store_interleaved(to, unit.re, unit.im);
    });
}

}  // namespace

const FunctionKernels function_kernels = {
    {take_log10f<MathForm::rounded>, take_log10f<MathForm::classic>},
    {take_log1pf<MathForm::rounded>, take_log1pf<MathForm::classic>},
    {take_angles<MathForm::rounded>, take_angles<MathForm::classic>},
    take_unit_numbers};

}  // namespace sorvo::audio::SORVO_LEVEL
