// One transform of a power of two with its own elements as lanes: the arithmetic of fft_pow2. Real
// and imaginary parts stand apart. While a stage has a pack of columns, lanes are neighbouring
// columns; then they are blocks, of which lane l takes block rev(c + l), so that each bin of the
// blocks is a run of lane_n bins of the whole.
//
// As without exact_zeros: a zero may have the wrong sign.
#pragma once

#include "fft/fft_plan.h"
#include "fft/lane_fft_pow2.inl"
#include "fft/lane_moves.inl"
#include "fft/lane_split_arrays.inl"
#include "util/lanes.inl"

namespace sorvo::audio {
namespace {

/// The twiddles of lane_n columns of a stage.
struct ColumnTwiddles {
    SORVO_INLINE ColumnTwiddles(const float* columns, std::size_t quarter, std::size_t k)
        : w1{load(columns + k), load(columns + quarter + k)},
          w2{load(columns + 2 * quarter + k), load(columns + 3 * quarter + k)},
          w3{load(columns + 4 * quarter + k), load(columns + 5 * quarter + k)} {}

    Complex w1;
    Complex w2;
    Complex w3;
};

SORVO_INLINE Complex multiply(Complex t, const Complex& w) {
    return {w.re * t.re - w.im * t.im, w.re * t.im + w.im * t.re};
}

/// A stage of the blocks that begin at begin, begin + span, ... below n.
template <bool inverse>
[[gnu::noinline]] void single_stage(SplitArrays x, std::size_t begin, std::size_t n,
                                    std::size_t span, const float* columns) {
    const std::size_t quarter = span / 4;
    for (std::size_t k = 0; k < quarter; k += lane_n) {
        const ColumnTwiddles w(columns, quarter, k);
        for (std::size_t s = begin + k; s < n; s += span) {
            const Complex a = x.load_at(s);
            const Complex b = x.load_at(s + quarter);
            const Complex c = x.load_at(s + 2 * quarter);
            const Complex d = x.load_at(s + 3 * quarter);
            const Complex ac = a + c;
            const Complex bd = b + d;
            x.store_at(s, ac + bd);
            x.store_at(s + quarter, multiply(ac - bd, w.w2));
            x.store_at(s + 2 * quarter, multiply(turn_back<inverse>(a - c, b - d), w.w1));
            x.store_at(s + 3 * quarter, multiply(turn_back<!inverse>(a - c, b - d), w.w3));
        }
    }
}

/// A stage of a block of real data, which may be x.re itself; block 0 becomes real data again.
SORVO_INLINE void single_real_stage(SplitArrays x, const float* src, std::size_t span,
                                    const float* columns, Magnitude& magnitude) {
    const std::size_t quarter = span / 4;
    for (std::size_t k = 0; k < quarter; k += lane_n) {
        const ColumnTwiddles w(columns, quarter, k);
        const Pack a = load(src + k);
        const Pack b = load(src + k + quarter);
        const Pack c = load(src + k + 2 * quarter);
        const Pack d = load(src + k + 3 * quarter);
        magnitude.see(a);
        magnitude.see(b);
        magnitude.see(c);
        magnitude.see(d);
        const Pack ac = a + c;
        const Pack bd = b + d;
        const Pack a_c = a - c;
        const Pack b_d = b - d;
        const Pack difference = ac - bd;
        store(x.re + k, ac + bd);
        x.store_at(k + quarter, {w.w2.re * difference, w.w2.im * difference});
        x.store_at(k + 2 * quarter, {w.w1.re * a_c + w.w1.im * b_d, w.w1.im * a_c - w.w1.re * b_d});
        x.store_at(k + 3 * quarter, {w.w3.re * a_c - w.w3.im * b_d, w.w3.im * a_c + w.w3.re * b_d});
    }
}

/// The bins of lane_n blocks, to their places.
struct BlockSink {
    static constexpr bool all_bins = true;

    float* dst;
    std::size_t block_count;
    float factor;

    SORVO_INLINE void operator()(std::size_t bin, Complex value) const {
        store_interleaved(dst + 2 * bin * block_count, value.re * factor, value.im * factor);
    }
};

/// The rest of a transform of which blocks of block_n elements are left.
template <bool inverse>
void single_blocks(float* dst, SplitArrays x, const FftPlanView& plan, float factor, Pack* work) {
    const std::size_t block_n = plan.block_n;
    const std::size_t block_count = plan.n / block_n;
    const float* twiddles = plan.twiddles;
    for (std::size_t span = plan.n; span > block_n; span /= 4) {
        twiddles += 6 * (span / 4);
    }
    for (std::size_t first = 0; first < block_count; first += lane_n) {
        const std::uint32_t* const order = plan.order + first;
        for (std::size_t j = 0; j < block_n; j += 4) {
            Pack re[4];
            Pack im[4];
            for (std::size_t i = 0; i < 4; ++i) {
                re[i] = load_columns(x.re + j, order + i);
                im[i] = load_columns(x.im + j, order + i);
            }
            transpose_quarters(re[0], re[1], re[2], re[3]);
            transpose_quarters(im[0], im[1], im[2], im[3]);
            for (std::size_t i = 0; i < 4; ++i) {
                store(work, j + i, {re[i], im[i]});
            }
        }
        block<inverse, false, false>(work, block_n, twiddles, block_n, 0,
                                     BlockSink{dst + 2 * first, block_count, factor});
    }
}

/// The arrays of a transform in the working storage, behind the packs of its blocks. The second
/// begins a line further on than a power of two, lest both meet in the same sets of the cache.
SORVO_INLINE SplitArrays split_arrays(const FftPlanView& plan, float* work) {
    float* const re = work + 2 * lane_n * plan.block_n;
    return {re, re + plan.n + 16};
}

std::uint32_t single_real_pow2(float* dst, const float* src, const FftPlanView& plan, float* work) {
    const std::size_t n = plan.n;
    const SplitArrays x = split_arrays(plan, work);
    const float* columns = plan.columns;
    Magnitude magnitude;
    single_real_stage(x, src, n, columns, magnitude);
    columns += 6 * (n / 4);
    Magnitude unused;
    for (std::size_t span = n / 4; span > plan.block_n; span /= 4) {
        single_real_stage(x, x.re, span, columns, unused);
        single_stage<false>(x, span, n, span, columns);
        columns += 6 * (span / 4);
    }
    for (std::size_t i = 0; i < plan.block_n; i += lane_n) {
        store(x.im + i, Pack{});
    }
    single_blocks<false>(dst, x, plan, 1.0F, reinterpret_cast<Pack*>(work));
    return magnitude.bits();
}

std::uint32_t single_inverse_pow2(float* dst, const float* src, const FftPlanView& plan,
                                  float* work) {
    const std::size_t n = plan.n;
    const SplitArrays x = split_arrays(plan, work);
    Magnitude magnitude;
    for (std::size_t i = 0; i < n; i += lane_n) {
        const Pack low = load(src + 2 * i);
        const Pack high = load(src + 2 * i + lane_n);
        magnitude.see(low);
        magnitude.see(high);
        store_separated(x.re + i, x.im + i, low, high);
    }
    const float* columns = plan.columns;
    for (std::size_t span = n; span > plan.block_n; span /= 4) {
        single_stage<true>(x, 0, n, span, columns);
        columns += 6 * (span / 4);
    }
    single_blocks<true>(dst, x, plan, 1.0F / static_cast<float>(n), reinterpret_cast<Pack*>(work));
    return magnitude.bits();
}

}  // namespace
}  // namespace sorvo::audio
