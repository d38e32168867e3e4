// One transform of any length that is not a power of two, its own elements as lanes: the sums of
// fft_general.
// 1. The inner transforms (one_inner.h): lanes are neighbouring residues, which are neighbours in
// the
//    input; or the outputs of one after the other.
// 2. The outer stages (one_outer.h): lanes are neighbouring columns. If all residues fill one
// vector at
//    most, the first of these stages takes the results right out of the lanes.
// 3. The outermost stage delivers its outputs to their places.
// The result is written after all input is read: it may take its place.
#pragma once

#include "fft/one_outer.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// What becomes of a sum.
struct Unscaled {
    SORVO_INLINE ComplexVec operator()(ComplexVec sum) const { return sum; }
};

struct Divided {
    FloatVec divisor;

    SORVO_INLINE ComplexVec operator()(ComplexVec sum) const {
        return {sum.re / divisor, sum.im / divisor};
    }
};

/// All outputs, each as `finish` makes it of its sum.
template <class T, Products products, class Finish>
void one_general(float* dst, const float* src, const FftPlanView& plan, const OnePlanView& one,
                 float* work, Finish finish) {
    const Elements<T, products> elements(src, plan.n, work);
    const Complex<float> root_0 = load_complex(plan.roots, 0);
    work += input_tail_n;
    if (one.outer_n == 0) {
        prime_transform<products>(one, root_0, elements, 0, 1, work, finish,
                                  [=](std::size_t k, const float* value) {
                                      __builtin_memcpy(dst + 2 * k, value, 2 * sizeof *dst);
                                  });
        return;
    }
    float* const results = work;
    work += 2 * one.inner_count * one.padded_n;
    auto* const vectors = reinterpret_cast<FloatVec*>(work);
    OuterJob job = {one, root_0, results, nullptr, vectors};
    if (one.powers != nullptr) {
        inner_directly<products>(results, one, root_0, elements, work, Unscaled());
    } else if (one.lane_residues != nullptr && one.inner_count <= lane_n) {
        inner_in_lanes<products>(plan, one, elements, vectors);
        job.lanes = vectors;
    } else {
        inner_transposed<products>(results, plan, one, elements, vectors);
    }
    for (std::size_t level = one.outer_n - 1; level > 0; --level) {
        join_stage<products>(job, one.stages[level]);
        job.lanes = nullptr;
    }
    deliver_stage<products>(dst, job, finish);
}

template <Products products>
void one_real_general(float* dst, const float* src, const FftPlanView& plan, const OnePlanView& one,
                      float* work) {
    one_general<FloatVec, products>(dst, src, plan, one, work, Unscaled());
}

template <Products products>
void one_inverse_general(float* dst, const float* src, const FftPlanView& plan,
                         const OnePlanView& one, float* work) {
    one_general<ComplexVec, products>(dst, src, plan, one, work,
                                      Divided{broadcast(static_cast<float>(plan.n))});
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
