// One transform of any other length with its own elements as lanes: the sums of fft_general.
//
// 1. Row r is the transform of the elements r, r + R, r + 2 R, ... for each residue r mod R: the
//    inner stages. Lanes are neighbouring residues, which are neighbours in the input; the results
//    are transposed. Or, if rows are direct transforms of a prime length and too few to fill the
//    lanes, one row after the other with its outputs as lanes.
//    If all residues fill one pack at most, the first of the outer stages takes its rows right out
//    of the lanes: they are in the order of the rows then.
// 2. The outer stages join rows in place; lanes are neighbouring outputs. Rows stay apart, padded:
//    closed up, most loads would span two stores that have not reached the cache.
//    Elements are kept in groups (lane_groups.inl), and so are the twiddles of a stage: all that a
//    group of columns takes, in the order of the arithmetic.
// 3. The outermost stage delivers its outputs to their places.
//
// What is left out of the sums is what lane_fft_general.inl leaves out; data must be finite. The
// result is written after all input is read: it may take its place.
#pragma once

#include "fft/fft_plan.h"
#include "fft/lane_columns.inl"
#include "fft/lane_elements.inl"
#include "fft/lane_fft_general.inl"
#include "fft/lane_fft_prime.inl"
#include "fft/lane_groups.inl"
#include "fft/single_kernels.h"
#include "simd/complex.h"
#include "simd/shuffle.h"

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

/// lane_n elements from element k on of four transforms in the lanes: the real (part 0) or
/// imaginary parts of lane `lane` and the next ones.
SORVO_INLINE void turn_rows(FloatVec* rows, const FloatVec* x, std::size_t k, std::size_t part,
                            std::size_t lane) {
    constexpr std::size_t hop = 2 * lane_n;
    const float* const from = reinterpret_cast<const float*>(x) + k * hop + part * lane_n + lane;
    for (std::size_t i = 0; i < 4; ++i) {
        rows[i] = load_quarters(from + i * hop, 4 * hop);
    }
    transpose_quarters(rows[0], rows[1], rows[2], rows[3]);
}

/// The rows of the residues first, first + 1, ... from their transforms in the lanes.
[[gnu::noinline]] void transpose_rows(float* rows, const SinglePlanView& single, const FloatVec* x,
                                      std::size_t first, std::size_t count) {
    for (std::size_t k = 0; k < single.part_n; k += lane_n) {
        for (std::size_t lane = 0; lane < lane_n; lane += 4) {
            for (std::size_t part = 0; part < 2; ++part) {
                float* const to = rows + group_offset(k) + part * group_n;
                FloatVec packs[4];
                turn_rows(packs, x, k, part, lane);
                for (std::size_t i = 0; i < 4 && lane + i < count; ++i) {
                    store(to + single.rows[first + lane + i], packs[i]);
                }
            }
        }
    }
}

void clear_padding(FloatVec* x, const SinglePlanView& single) {
    for (std::size_t k = single.part_n; k < single.row_n; ++k) {
        store_complex(x, k, {FloatVec{}, FloatVec{}});
    }
}

template <class T>
void rows_in_lanes(const FftPlanView& plan, const Elements<T>& elements, FloatVec* work) {
    const SinglePlanView& single = plan.single;
    clear_padding(work, single);
    const RowInput<T> input{elements, single.lane_residues};
    GeneralTransform<RowInput<T>>(plan, work + 2 * single.row_n, input)
        .run_inner(work, single.outer_n);
}

template <class T>
void rows_by_residue(float* rows, const FftPlanView& plan, const Elements<T>& elements,
                     FloatVec* work) {
    const SinglePlanView& single = plan.single;
    const std::size_t row_count = single.row_count;
    FloatVec* const scratch = work + 2 * single.row_n;
    clear_padding(work, single);
    for (std::size_t first = 0; first < row_count; first += lane_n) {
        const ResidueInput<T> input{elements, first};
        GeneralTransform<ResidueInput<T>>(plan, scratch, input).run_inner(work, single.outer_n);
        transpose_rows(rows, single, work, first, row_count - first);
    }
}

template <class T>
void rows_directly(float* rows, const FftPlanView& plan, const Elements<T>& elements, float* work) {
    const std::size_t row_count = plan.single.row_count;
    for (std::size_t residue = 0; residue < row_count; ++residue) {
        const std::size_t row = plan.single.rows[residue];
        direct_transform(plan.single, elements, residue, row_count, work, Unscaled(),
                         [=](std::size_t k, const float* value) {
                             float* const to = rows + row + group_offset(k);
                             to[0] = value[0];
                             to[group_n] = value[1];
                         });
    }
}

/// Where a block of a stage has its inputs from, for the columns k and on: get(s) is input s. Here
/// from rows, where the outputs go too.
struct StoredInputs {
    SORVO_INLINE StoredInputs(const FloatVec* /*lanes*/, const float* x, std::size_t hop,
                              std::size_t /*block*/, std::size_t /*k*/)
        : x_(x), hop_(hop) {}

    SORVO_INLINE ComplexVec operator()(std::size_t s) const { return load_group(x_ + s * hop_); }

  private:
    const float* x_;
    std::size_t hop_;
};

/// From the lanes of rows_in_lanes(). What is read behind the last lane is not used.
template <std::size_t factor>
struct LaneInputs {
    SORVO_INLINE LaneInputs(const FloatVec* lanes, const float* /*x*/, std::size_t /*hop*/,
                            std::size_t block, std::size_t k) {
        for (std::size_t part = 0; part < 2; ++part) {
            for (std::size_t s = 0; s < factor; s += 4) {
                turn_rows(parts_[part] + s, lanes, k, part, block * factor + s);
            }
        }
    }

    SORVO_INLINE ComplexVec operator()(std::size_t s) const { return {parts_[0][s], parts_[1][s]}; }

  private:
    FloatVec parts_[2][(factor + 3) / 4 * 4];
};

/// A type as a value.
template <class T>
struct Type {
    using type = T;
};

/// Calls body(Columns<factor>(), Type of its inputs); `lanes` is nullptr where they are rows.
template <class Body>
SORVO_INLINE void with_stage(const RowStage& stage, const FloatVec* lanes, Body body) {
    with_columns(stage.factor, [&](auto columns) {
        constexpr std::size_t factor = decltype(columns)::fixed_factor;
        if constexpr (factor != any_factor) {
            if (lanes != nullptr) {
                body(columns, Type<LaneInputs<factor>>());
                return;
            }
        }
        body(columns, Type<StoredInputs>());
    });
}

/// Goes through the columns of a stage, lane_n at a time: body(k, rest, x, w) with the first of
/// them, how many the row has from there on, where it is in the rows and the twiddles.
template <class Body>
SORVO_INLINE void for_columns(float* rows, const SinglePlanView& single, const RowStage& stage,
                              Body body) {
    const float* w = stage.twiddles;
    for (std::size_t start = 0; start < stage.sub_n; start += single.part_n) {
        for (std::size_t k = 0; k < single.part_n; k += lane_n) {
            const std::size_t in_group = k % group_n;
            body(start + k, single.part_n - k, rows + group_offset(k),
                 RowTwiddles{w + 2 * stage.twiddle_n * (k - in_group) + in_group});
        }
        rows += 2 * single.row_n;
        w += 2 * stage.twiddle_n * single.row_n;
    }
}

template <class StageColumns, class Inputs>
[[gnu::noinline]] void join_rows(float* rows, const SinglePlanView& single, const RowStage& stage,
                                 const FloatVec* lanes, FloatVec* scratch) {
    const std::size_t hop = stage.hop;
    const auto join_columns = [&](std::size_t k, std::size_t /*rest*/, float* x,
                                  RowTwiddles w) SORVO_INLINE_BODY {
        for (std::size_t block = 0; block < stage.blocks; ++block) {
            const Inputs get(lanes, x, hop, block, k);
            StageColumns::join(stage.factor, w, scratch, get, [=](std::size_t u, ComplexVec sum) {
                store_group(x + u * hop, sum);
            });
            x += stage.factor * hop;
        }
    };
    for_columns(rows, single, stage, join_columns);
}

/// The outermost stage. Packs overlap: what the padding of a row leaves is written over by the next
/// row; only what would reach beyond the rows of an output is cut off.
template <class StageColumns, class Inputs, class Finish>
[[gnu::noinline]] void deliver_rows(float* dst, float* rows, const SinglePlanView& single,
                                    const FloatVec* lanes, FloatVec* scratch, Finish finish) {
    const RowStage& stage = single.stages[0];
    const std::size_t sub_n = stage.sub_n;
    const auto deliver_columns = [&](std::size_t k, std::size_t rest, const float* x,
                                     RowTwiddles w) SORVO_INLINE_BODY {
        float* const to = dst + 2 * k;
        const Inputs get(lanes, x, stage.hop, 0, k);
        if (k + lane_n <= sub_n) {
            StageColumns::join(stage.factor, w, scratch, get, [=](std::size_t u, ComplexVec sum) {
                const ComplexVec value = finish(sum);
                store_interleaved(to + 2 * u * sub_n, value.re, value.im);
            });
        } else {
            const std::size_t count = rest < lane_n ? rest : lane_n;
            StageColumns::join(stage.factor, w, scratch, get, [=](std::size_t u, ComplexVec sum) {
                const ComplexVec value = finish(sum);
                store_interleaved(to + 2 * u * sub_n, value.re, value.im, count);
            });
        }
    };
    for_columns(rows, single, stage, deliver_columns);
}

/// All outputs, each as `finish` makes it of its sum.
template <class T, class Finish>
SORVO_INLINE void single_general(float* dst, const float* src, const FftPlanView& plan, float* work,
                                 Finish finish) {
    const SinglePlanView& single = plan.single;
    const Elements<T> elements(src, plan.n, work);
    work += single_tail_n;
    if (single.outer_n == 0) {
        direct_transform(single, elements, 0, 1, work, finish,
                         [=](std::size_t k, const float* value) {
                             __builtin_memcpy(dst + 2 * k, value, 2 * sizeof *dst);
                         });
        return;
    }
    float* const rows = work;
    work += 2 * single.row_count * single.row_n;
    auto* const packs = reinterpret_cast<FloatVec*>(work);
    const FloatVec* lanes = nullptr;
    if (single.powers != nullptr) {
        rows_directly(rows, plan, elements, work);
    } else if (single.lane_residues != nullptr && single.row_count <= lane_n) {
        rows_in_lanes(plan, elements, packs);
        lanes = packs;
    } else {
        rows_by_residue(rows, plan, elements, packs);
    }
    for (std::size_t level = single.outer_n - 1; level > 0; --level) {
        const RowStage& stage = single.stages[level];
        with_stage(stage, lanes, [&](auto columns, auto inputs) {
            join_rows<decltype(columns), typename decltype(inputs)::type>(rows, single, stage,
                                                                          lanes, packs);
        });
        lanes = nullptr;
    }
    with_stage(single.stages[0], lanes, [&](auto columns, auto inputs) {
        deliver_rows<decltype(columns), typename decltype(inputs)::type>(dst, rows, single, lanes,
                                                                         packs, finish);
    });
}

void single_real_general(float* dst, const float* src, const FftPlanView& plan, float* work) {
    single_general<FloatVec>(dst, src, plan, work, Unscaled());
}

void single_inverse_general(float* dst, const float* src, const FftPlanView& plan, float* work) {
    single_general<ComplexVec>(dst, src, plan, work,
                               Divided{broadcast(static_cast<float>(plan.n))});
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
