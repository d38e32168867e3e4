// One transform of a power of two with its own elements as lanes: the arithmetic of fft_pow2. While
// a stage has a pack of columns, lanes are neighbouring columns; then they are blocks, of which
// lane l takes block rev(c + l), so that each bin of the blocks is a run of lane_n bins of the
// whole. Elements and the twiddles of the stages are kept in groups (lane_groups.inl).
//
// Nothing is left out, not even products with 0 and 1: zeros get their signs and data may be
// anything. The result is written after all input is read: it may take its place.
#pragma once

#include "fft/fft_plan.h"
#include "fft/lane_fft_pow2.inl"
#include "fft/lane_groups.inl"
#include "fft/single_kernels.h"
#include "simd/complex.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// The twiddles of lane_n columns of a stage.
struct ColumnTwiddles {
    SORVO_INLINE explicit ColumnTwiddles(const float* columns)
        : w1(load_group(columns)),
          w2(load_group(columns + 2 * group_n)),
          w3(load_group(columns + 4 * group_n)) {}

    ComplexVec w1;
    ComplexVec w2;
    ComplexVec w3;
};

/// Where they are in the twiddles of the stage.
SORVO_INLINE std::size_t column_offset(std::size_t k) {
    return 6 * (k - k % group_n) + k % group_n;
}

SORVO_INLINE ComplexVec multiply(ComplexVec t, const ComplexVec& w) {
    return {w.re * t.re - w.im * t.im, w.re * t.im + w.im * t.re};
}

/// A stage of the blocks that begin at begin, begin + span, ... below n.
template <bool inverse>
[[gnu::noinline]] void single_stage(float* x, std::size_t begin, std::size_t n, std::size_t span,
                                    const float* columns) {
    const std::size_t quarter = span / 4;
    for (std::size_t k = 0; k < quarter; k += lane_n) {
        const ColumnTwiddles w(columns + column_offset(k));
        float* at = x + 2 * begin + group_offset(k);
        for (std::size_t s = begin; s < n; s += span, at += 2 * span) {
            const ComplexVec a = load_group(at);
            const ComplexVec b = load_group(at + 2 * quarter);
            const ComplexVec c = load_group(at + 4 * quarter);
            const ComplexVec d = load_group(at + 6 * quarter);
            const ComplexVec ac = a + c;
            const ComplexVec bd = b + d;
            store_group(at, ac + bd);
            store_group(at + 2 * quarter, multiply(ac - bd, w.w2));
            store_group(at + 4 * quarter, multiply(turn_back<inverse>(a - c, b - d), w.w1));
            store_group(at + 6 * quarter, multiply(turn_back<!inverse>(a - c, b - d), w.w3));
        }
    }
}

/// A stage of block 0 of real data, of which input(i) are the elements from i on: single_stage with
/// imaginary parts that are +0. Block 0 becomes such data again.
template <class Input>
SORVO_INLINE void single_real_stage(float* x, std::size_t span, const float* columns, Input input) {
    const std::size_t quarter = span / 4;
    const FloatVec zero{};
    for (std::size_t k = 0; k < quarter; k += lane_n) {
        const ColumnTwiddles w(columns + column_offset(k));
        float* const at = x + group_offset(k);
        const FloatVec a = input(k);
        const FloatVec b = input(k + quarter);
        const FloatVec c = input(k + 2 * quarter);
        const FloatVec d = input(k + 3 * quarter);
        const FloatVec ac = a + c;
        const FloatVec bd = b + d;
        const ComplexVec a_c = {a - c, zero};
        const ComplexVec b_d = {b - d, zero};
        store_group(at, {ac + bd, zero});
        store_group(at + 2 * quarter, multiply(ComplexVec{ac - bd, zero}, w.w2));
        store_group(at + 4 * quarter, multiply(turn_back<false>(a_c, b_d), w.w1));
        store_group(at + 6 * quarter, multiply(turn_back<true>(a_c, b_d), w.w3));
    }
}

/// The bins of lane_n blocks, to their places.
struct BlockSink {
    static constexpr bool all_bins = true;

    float* dst;
    std::size_t block_count;
    float factor;

    SORVO_INLINE void operator()(std::size_t bin, ComplexVec value) const {
        float* const to = dst + 2 * bin * block_count;
        const ComplexVec result = {value.re * factor, value.im * factor};
        if (block_count < lane_n) {
            store_interleaved(to, result.re, result.im, block_count);
        } else {
            store_interleaved(to, result.re, result.im);
        }
    }
};

/// The stages that are left when blocks of block_n elements are, and their results.
template <bool inverse>
SORVO_INLINE void single_blocks(float* dst, const float* x, const FftPlanView& plan, float factor,
                                FloatVec* work) {
    const std::size_t block_n = plan.block_n;
    const std::size_t block_count = plan.n / block_n;
    const float* twiddles = plan.twiddles;
    for (std::size_t span = plan.n; span > block_n; span /= 4) {
        twiddles += 6 * (span / 4);
    }
    for (std::size_t first = 0; first < block_count; first += lane_n) {
        const std::uint32_t* const order = plan.order + first;
        for (std::size_t j = 0; j < block_n; j += 4) {
            const float* const from = x + group_offset(j);
            FloatVec re[4];
            FloatVec im[4];
            for (std::size_t i = 0; i < 4; ++i) {
                re[i] = load_quarters(from, order + i);
                im[i] = load_quarters(from + group_n, order + i);
            }
            transpose_quarters(re[0], re[1], re[2], re[3]);
            transpose_quarters(im[0], im[1], im[2], im[3]);
            for (std::size_t i = 0; i < 4; ++i) {
                store_complex(work, j + i, {re[i], im[i]});
            }
        }
        block<inverse, true, false>(work, block_n, twiddles, block_n, 0,
                                    BlockSink{dst + 2 * first, block_count, factor});
    }
}

/// The elements stand behind the packs of a group of blocks.
SORVO_INLINE float* elements_of(const FftPlanView& plan, float* work) {
    return work + 2 * lane_n * plan.block_n;
}

void single_real_pow2(float* dst, const float* src, const FftPlanView& plan, float* work) {
    float* const x = elements_of(plan, work);
    const float* columns = plan.columns;
    single_real_stage(x, plan.n, columns, [=](std::size_t i) { return load(src + i); });
    columns += 6 * (plan.n / 4);
    for (std::size_t span = plan.n / 4; span > plan.block_n; span /= 4) {
        single_real_stage(x, span, columns,
                          [=](std::size_t i) { return load(x + group_offset(i)); });
        single_stage<false>(x, span, plan.n, span, columns);
        columns += 6 * (span / 4);
    }
    single_blocks<false>(dst, x, plan, 1.0F, reinterpret_cast<FloatVec*>(work));
}

void single_inverse_pow2(float* dst, const float* src, const FftPlanView& plan, float* work) {
    float* const x = elements_of(plan, work);
    for (std::size_t i = 0; i < plan.n; i += lane_n) {
        float* const to = x + group_offset(i);
        store_separated(to, to + group_n, load(src + 2 * i), load(src + 2 * i + lane_n));
    }
    const float* columns = plan.columns;
    for (std::size_t span = plan.n; span > plan.block_n; span /= 4) {
        single_stage<true>(x, 0, plan.n, span, columns);
        columns += 6 * (span / 4);
    }
    const float factor = 1.0F / static_cast<float>(plan.n);
    single_blocks<true>(dst, x, plan, factor, reinterpret_cast<FloatVec*>(work));
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
