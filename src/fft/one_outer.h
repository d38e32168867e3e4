// The outer stages of one transform: they join the results of the inner ones, in place,
// neighbouring columns as lanes. The results stay apart, padded to whole groups: closed up, most
// loads would span two stores that have not reached the cache.
#pragma once

#include "fft/columns.h"
#include "fft/groups.h"
#include "fft/one_inner.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// The twiddles of lane_n columns.
template <std::size_t factor>
struct GroupTwiddles {
    const float* at;
    std::size_t factor_n;  ///< the factor, also where it has no code of its own

    SORVO_INLINE ComplexVec operator()(std::size_t i) const {
        return load_group(at + 2 * i * group_n);
    }

    SORVO_INLINE ComplexVec operator()(std::size_t u, std::size_t s) const {
        return (*this)(u * (factor_n - 1) + s - 1);
    }

    /// For sums of some outputs from u on, of which some may not be there.
    template <std::size_t group>
    SORVO_INLINE auto from(std::size_t u) const {
        return [*this, u](std::size_t i, std::size_t s) {
            return (*this)(u + i < factor_n ? u + i : u, s);
        };
    }
};

/// Where a block of a stage has its inputs from, for the columns k and on: get(s) is input s. Here
/// from results in memory, where the outputs go too.
struct StoredInputs {
    SORVO_INLINE StoredInputs(const FloatVec* /*lanes*/, const float* x, std::size_t hop,
                              std::size_t /*block*/, std::size_t /*k*/)
        : x_(x), hop_(hop) {}

    SORVO_INLINE ComplexVec operator()(std::size_t s) const { return load_group(x_ + s * hop_); }

  private:
    const float* x_;
    std::size_t hop_;
};

/// From the lanes of inner_in_lanes(). What is read behind the last lane is not used.
template <std::size_t factor>
struct LaneInputs {
    SORVO_INLINE LaneInputs(const FloatVec* lanes, const float* /*x*/, std::size_t /*hop*/,
                            std::size_t block, std::size_t k) {
        for (std::size_t part = 0; part < 2; ++part) {
            for (std::size_t s = 0; s < factor; s += 4) {
                transpose_lanes(parts_[part] + s, lanes, k, part, block * factor + s);
            }
        }
    }

    SORVO_INLINE ComplexVec operator()(std::size_t s) const { return {parts_[0][s], parts_[1][s]}; }

  private:
    FloatVec parts_[2][(factor + 3) / 4 * 4];
};

/// Goes through the columns of a stage, lane_n at a time: body(k, rest, x, w) with the first of
/// them, how many its sub-transform has from there on, where it is in the results, and the
/// twiddles.
template <std::size_t factor, class Body>
SORVO_INLINE void for_columns(float* results, const OnePlanView& one, const OuterStage& stage,
                              Body body) {
    const float* w = stage.twiddles;
    for (std::size_t start = 0; start < stage.sub_n; start += one.inner_n) {
        for (std::size_t k = 0; k < one.inner_n; k += lane_n) {
            const std::size_t in_group = k % group_n;
            body(start + k, one.inner_n - k, results + group_offset(k),
                 GroupTwiddles<factor>{w + 2 * stage.twiddle_n * (k - in_group) + in_group,
                                       stage.factor});
        }
        results += 2 * one.padded_n;
        w += 2 * stage.twiddle_n * one.padded_n;
    }
}

/// What the outer stages work on.
struct OuterJob {
    const OnePlanView& one;
    Complex<float> root_0;
    float* results;
    const FloatVec* lanes;  ///< of inner_in_lanes(), or nullptr
    FloatVec* scratch;
};

template <std::size_t factor, Products products, class Inputs>
[[gnu::noinline]] void join_results(const OuterJob& job, const OuterStage& stage) {
    const std::size_t hop = stage.hop;
    const std::size_t n = factor != any_factor ? factor : stage.factor;
    const auto join_columns = [&](std::size_t k, std::size_t /*rest*/, float* x,
                                  const auto& w) SORVO_INLINE_BODY {
        for (std::size_t block = 0; block < stage.blocks; ++block) {
            const Inputs get(job.lanes, x, hop, block, k);
            Column<factor>::template transform<products>(
                job.root_0, w, job.scratch, n, n, get,
                [=](std::size_t u, ComplexVec sum) { store_group(x + u * hop, sum); });
            x += n * hop;
        }
    };
    for_columns<factor>(job.results, job.one, stage, join_columns);
}

/// The outermost stage. Vectors overlap: what the padding of a result leaves is written over by the
/// next one; only what would reach beyond the columns of an output is cut off.
template <std::size_t factor, Products products, class Inputs, class Finish>
[[gnu::noinline]] void deliver_results(float* dst, const OuterJob& job, Finish finish) {
    const OuterStage& stage = job.one.stages[0];
    const std::size_t sub_n = stage.sub_n;
    const std::size_t n = factor != any_factor ? factor : stage.factor;
    const auto deliver_columns = [&](std::size_t k, std::size_t rest, const float* x,
                                     const auto& w) SORVO_INLINE_BODY {
        float* const to = dst + 2 * k;
        const Inputs get(job.lanes, x, stage.hop, 0, k);
        if (k + lane_n <= sub_n) {
            Column<factor>::template transform<products>(
                job.root_0, w, job.scratch, n, n, get, [=](std::size_t u, ComplexVec sum) {
                    const ComplexVec value = finish(sum);
                    store_interleaved(to + 2 * u * sub_n, value.re, value.im);
                });
        } else {
            const std::size_t count = rest < lane_n ? rest : lane_n;
            Column<factor>::template transform<products>(
                job.root_0, w, job.scratch, n, n, get, [=](std::size_t u, ComplexVec sum) {
                    const ComplexVec value = finish(sum);
                    store_interleaved(to + 2 * u * sub_n, value.re, value.im, count);
                });
        }
    };
    for_columns<factor>(job.results, job.one, stage, deliver_columns);
}

/// A stage from memory or, the innermost, from the lanes.
template <Products products>
void join_stage(const OuterJob& job, const OuterStage& stage) {
    with_radix(stage.factor, [&](auto radix) {
        constexpr std::size_t factor = decltype(radix)::factor;
        if constexpr (factor != any_factor) {
            if (job.lanes != nullptr) {
                join_results<factor, products, LaneInputs<factor>>(job, stage);
                return;
            }
        }
        join_results<factor, products, StoredInputs>(job, stage);
    });
}

template <Products products, class Finish>
void deliver_stage(float* dst, const OuterJob& job, Finish finish) {
    with_radix(job.one.stages[0].factor, [&](auto radix) {
        constexpr std::size_t factor = decltype(radix)::factor;
        if constexpr (factor != any_factor) {
            if (job.lanes != nullptr) {
                deliver_results<factor, products, LaneInputs<factor>>(dst, job, finish);
                return;
            }
        }
        deliver_results<factor, products, StoredInputs>(dst, job, finish);
    });
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
