// One transform of a power of two with its own elements as lanes: the arithmetic of fft_pow2. While
// a stage has a vector of columns, lanes are neighbouring columns; then they are blocks, of which
// lane l takes block rev(c + l), so that each bin of the blocks is a run of lane_n bins of the
// whole. Elements and the twiddles of the stages are kept in groups (groups.h).
//
// Nothing is left out, not even products with 0 and 1: zeros get their signs and data may be
// anything. The result is written after all input is read: it may take its place.
#pragma once

#include "fft/batch_pow2.h"
#include "fft/groups.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// The twiddles of columns k ... k + lane_n - 1 of a stage; `columns` are those of the stage.
SORVO_INLINE Radix4Twiddles<FloatVec> load_columns(const float* columns, std::size_t k) {
    const float* const at = columns + 6 * (k - k % group_n) + k % group_n;
    return {load_group(at), load_group(at + 2 * group_n), load_group(at + 4 * group_n)};
}

/// A stage of the blocks that begin at begin, begin + span, ... below n.
template <bool inverse>
[[gnu::noinline]] void one_radix4_stage(float* x, std::size_t begin, std::size_t n,
                                        std::size_t span, const float* columns) {
    const std::size_t quarter = span / 4;
    for (std::size_t k = 0; k < quarter; k += lane_n) {
        const Radix4Twiddles<FloatVec> w = load_columns(columns, k);
        float* at = x + 2 * begin + group_offset(k);
        for (std::size_t s = begin; s < n; s += span, at += 2 * span) {
            ComplexVec y[4];
            for (std::size_t i = 0; i < 4; ++i) {
                y[i] = load_group(at + 2 * i * quarter);
            }
            radix4<inverse>(y, w);
            for (std::size_t i = 0; i < 4; ++i) {
                store_group(at + 2 * i * quarter, y[i]);
            }
        }
    }
}

/// A stage of block 0 of real data, of which input(i) are the elements from i on: imaginary parts
/// are +0. Block 0 becomes such data again.
template <class Input>
SORVO_INLINE void one_real_radix4_stage(float* x, std::size_t span, const float* columns,
                                        Input input) {
    const std::size_t quarter = span / 4;
    for (std::size_t k = 0; k < quarter; k += lane_n) {
        float* const at = x + group_offset(k);
        ComplexVec y[4];
        for (std::size_t i = 0; i < 4; ++i) {
            y[i] = {input(k + i * quarter), FloatVec{}};
        }
        radix4<false>(y, load_columns(columns, k));
        for (std::size_t i = 0; i < 4; ++i) {
            store_group(at + 2 * i * quarter, y[i]);
        }
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
SORVO_INLINE void one_blocks(float* dst, const float* x, const FftPlanView& plan,
                             const OnePlanView& one, float factor, FloatVec* work) {
    const std::size_t block_n = one.block_n;
    const std::size_t block_count = plan.n / block_n;
    const float* twiddles = plan.twiddles;
    for (std::size_t span = plan.n; span > block_n; span /= 4) {
        twiddles += 6 * (span / 4);
    }
    for (std::size_t first = 0; first < block_count; first += lane_n) {
        const std::uint32_t* const order = one.order + first;
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
        block<inverse, Products::literal, false>(work, block_n, twiddles, block_n, 0,
                                                 BlockSink{dst + 2 * first, block_count, factor});
    }
}

/// The elements stand behind the vectors of a group of blocks.
SORVO_INLINE float* elements_of(const OnePlanView& one, float* work) {
    return work + 2 * lane_n * one.block_n;
}

void one_real_pow2(float* dst, const float* src, const FftPlanView& plan, const OnePlanView& one,
                   float* work) {
    float* const x = elements_of(one, work);
    const float* columns = one.columns;
    one_real_radix4_stage(x, plan.n, columns, [=](std::size_t i) { return load(src + i); });
    columns += 6 * (plan.n / 4);
    for (std::size_t span = plan.n / 4; span > one.block_n; span /= 4) {
        one_real_radix4_stage(x, span, columns,
                              [=](std::size_t i) { return load(x + group_offset(i)); });
        one_radix4_stage<false>(x, span, plan.n, span, columns);
        columns += 6 * (span / 4);
    }
    one_blocks<false>(dst, x, plan, one, 1.0F, reinterpret_cast<FloatVec*>(work));
}

void one_inverse_pow2(float* dst, const float* src, const FftPlanView& plan, const OnePlanView& one,
                      float* work) {
    float* const x = elements_of(one, work);
    for (std::size_t i = 0; i < plan.n; i += lane_n) {
        float* const to = x + group_offset(i);
        store_separated(to, to + group_n, load(src + 2 * i), load(src + 2 * i + lane_n));
    }
    const float* columns = one.columns;
    for (std::size_t span = plan.n; span > one.block_n; span /= 4) {
        one_radix4_stage<true>(x, 0, plan.n, span, columns);
        columns += 6 * (span / 4);
    }
    const float factor = 1.0F / static_cast<float>(plan.n);
    one_blocks<true>(dst, x, plan, one, factor, reinterpret_cast<FloatVec*>(work));
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
