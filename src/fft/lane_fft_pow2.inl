// Transforms of a power of two in all lanes: the arithmetic of fft_pow2, in place, depth first, so
// that the smaller transforms stay in the first-level cache. The bit reversal is only the bin to
// which a leaf delivers, and the last pass makes the bins 0 ... n / 2 alone.
//
// `exact_zeros` keeps the products with the twiddle (1, -0), which decide nothing but the sign of a
// zero. Without it the results are those of fft_pow2 save for that sign; data must be finite.
#pragma once

#include "fft/fft_plan.h"
#include "simd/complex.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// t times the twiddle at w.
SORVO_INLINE ComplexVec multiply(ComplexVec t, const float* w) {
    return Complex<float>{w[0], w[1]} * t;
}

/// a - i b (forward) or a + i b.
template <bool inverse>
SORVO_INLINE ComplexVec turn_back(ComplexVec a, ComplexVec b) {
    return inverse ? ComplexVec{a.re - b.im, a.im + b.re} : ComplexVec{a.re + b.im, a.im - b.re};
}

template <bool inverse, bool multiplied>
SORVO_INLINE void radix4_column(FloatVec* x, std::size_t quarter, std::size_t k, const float* w) {
    const ComplexVec a = load_complex(x, k);
    const ComplexVec b = load_complex(x, k + quarter);
    const ComplexVec c = load_complex(x, k + 2 * quarter);
    const ComplexVec d = load_complex(x, k + 3 * quarter);
    const ComplexVec ac = a + c;
    const ComplexVec bd = b + d;
    const ComplexVec a_c = a - c;
    const ComplexVec b_d = b - d;
    const ComplexVec t1 = turn_back<inverse>(a_c, b_d);
    const ComplexVec t3 = turn_back<!inverse>(a_c, b_d);
    store_complex(x, k, ac + bd);
    store_complex(x, k + quarter, multiplied ? multiply(ac - bd, w + 2) : ac - bd);
    store_complex(x, k + 2 * quarter, multiplied ? multiply(t1, w) : t1);
    store_complex(x, k + 3 * quarter, multiplied ? multiply(t3, w + 4) : t3);
}

template <bool inverse, bool exact_zeros>
[[gnu::noinline]] void radix4_stage(FloatVec* x, std::size_t quarter, const float* twiddles) {
    radix4_column<inverse, exact_zeros>(x, quarter, 0, twiddles);
    for (std::size_t k = 1; k < quarter; ++k) {
        radix4_column<inverse, true>(x, quarter, k, twiddles + 6 * k);
    }
}

/// The stage on real data, of which input(i) is element i. Block 0 becomes real data again, in the
/// even packs; the others become complex. As if with exact_zeros off.
template <class Input>
SORVO_INLINE void real_radix4_stage(FloatVec* x, std::size_t quarter, const float* twiddles,
                                    Input input) {
    for (std::size_t k = 0; k < quarter; ++k) {
        const float* const w = twiddles + 6 * k;
        const FloatVec a = input(k);
        const FloatVec b = input(k + quarter);
        const FloatVec c = input(k + 2 * quarter);
        const FloatVec d = input(k + 3 * quarter);
        const FloatVec ac = a + c;
        const FloatVec bd = b + d;
        const FloatVec a_c = a - c;
        const FloatVec b_d = b - d;
        x[2 * k] = ac + bd;
        const FloatVec difference = ac - bd;
        store_complex(x, k + quarter, {w[2] * difference, w[3] * difference});
        store_complex(x, k + 2 * quarter, {w[0] * a_c + w[1] * b_d, w[1] * a_c - w[0] * b_d});
        store_complex(x, k + 3 * quarter, {w[4] * a_c - w[5] * b_d, w[5] * a_c + w[4] * b_d});
    }
}

/// The last four elements of a transform whose log2 is even. Elements 0 and 2 are bins below n / 2;
/// element 1 of the very first leaf is bin n / 2.
template <bool inverse, bool exact_zeros, bool first, class Sink>
SORVO_INLINE void leaf4(const FloatVec* x, const float* twiddles, std::size_t n, std::size_t bin,
                        Sink sink) {
    const ComplexVec a = load_complex(x, 0);
    const ComplexVec b = load_complex(x, 1);
    const ComplexVec c = load_complex(x, 2);
    const ComplexVec d = load_complex(x, 3);
    const ComplexVec ac = a + c;
    const ComplexVec bd = b + d;
    const ComplexVec t1 = turn_back<inverse>(a - c, b - d);
    sink(bin, ac + bd);
    sink(bin + n / 4, exact_zeros ? multiply(t1, twiddles) : t1);
    if (first || Sink::all_bins) {
        sink(bin + n / 2, exact_zeros ? multiply(ac - bd, twiddles + 2) : ac - bd);
    }
    if (Sink::all_bins) {
        const ComplexVec t3 = turn_back<!inverse>(a - c, b - d);
        sink(bin + n / 2 + n / 4, exact_zeros ? multiply(t3, twiddles + 4) : t3);
    }
}

/// The last eight elements where log2(n) is odd: a radix-4 stage of two columns and the radix-2
/// pass, of whose results only the sums (and the first difference) are bins up to n / 2.
template <bool inverse, bool exact_zeros, bool first, class Sink>
SORVO_INLINE void leaf8(const FloatVec* x, const float* twiddles, std::size_t n, std::size_t bin,
                        Sink sink) {
    ComplexVec columns[2][4];
    for (std::size_t column = 0; column < 2; ++column) {
        const ComplexVec a = load_complex(x, column);
        const ComplexVec b = load_complex(x, column + 2);
        const ComplexVec c = load_complex(x, column + 4);
        const ComplexVec d = load_complex(x, column + 6);
        const ComplexVec ac = a + c;
        const ComplexVec bd = b + d;
        const ComplexVec t1 = turn_back<inverse>(a - c, b - d);
        const ComplexVec t3 = turn_back<!inverse>(a - c, b - d);
        const float* const w = twiddles + 6 * column;
        const bool multiplied = exact_zeros || column == 1;
        ComplexVec* const y = columns[column];
        y[0] = ac + bd;
        y[1] = multiplied ? multiply(ac - bd, w + 2) : ac - bd;
        y[2] = multiplied ? multiply(t1, w) : t1;
        y[3] = multiplied ? multiply(t3, w + 4) : t3;
    }
    const std::size_t bins[4] = {bin, bin + n / 4, bin + n / 8, bin + n / 4 + n / 8};
    for (std::size_t j = 0; j < 4; ++j) {
        sink(bins[j], columns[0][j] + columns[1][j]);
        if (Sink::all_bins || (first && j == 0)) {
            sink(bins[j] + n / 2, columns[0][j] - columns[1][j]);
        }
    }
}

template <bool inverse, bool exact_zeros, bool first, class Sink>
SORVO_INLINE void leaf(const FloatVec* x, std::size_t span, const float* twiddles, std::size_t n,
                       std::size_t bin, Sink sink) {
    if (span == 4) {
        leaf4<inverse, exact_zeros, first>(x, twiddles, n, bin, sink);
    } else {
        leaf8<inverse, exact_zeros, first>(x, twiddles, n, bin, sink);
    }
}

/// The first bins of the four blocks into which a stage splits a block that starts at `bin`.
struct BlockBins {
    SORVO_INLINE BlockBins(std::size_t n, std::size_t quarter, std::size_t bin)
        : at{bin, bin + n / (2 * quarter), bin + n / (4 * quarter),
             bin + n / (2 * quarter) + n / (4 * quarter)} {}

    std::size_t at[4];
};

/// A block of `span` elements from `bin` on, down to the leaves; `first` is the block at element 0.
template <bool inverse, bool exact_zeros, bool first, class Sink>
[[gnu::noinline]] void block(FloatVec* x, std::size_t span, const float* twiddles, std::size_t n,
                             std::size_t bin, Sink sink) {
    if (span <= 8) {
        leaf<inverse, exact_zeros, first>(x, span, twiddles, n, bin, sink);
        return;
    }
    const std::size_t quarter = span / 4;
    radix4_stage<inverse, exact_zeros>(x, quarter, twiddles);
    const float* const next = twiddles + 6 * quarter;
    const BlockBins bins(n, quarter, bin);
    if (quarter <= 8) {
        leaf<inverse, exact_zeros, first>(x, quarter, next, n, bins.at[0], sink);
        for (std::size_t j = 1; j < 4; ++j) {
            leaf<inverse, exact_zeros, false>(x + 2 * j * quarter, quarter, next, n, bins.at[j],
                                              sink);
        }
        return;
    }
    block<inverse, exact_zeros, first>(x, quarter, next, n, bins.at[0], sink);
    for (std::size_t j = 1; j < 4; ++j) {
        block<inverse, exact_zeros, false>(x + 2 * j * quarter, quarter, next, n, bins.at[j], sink);
    }
}

/// Bins 0 ... n / 2 of real data input(0 ... n - 1), n >= 16, without exact zeros.
template <class Input, class Sink>
void real_transform(FloatVec* x, const FftPlanView& plan, Input input, Sink sink) {
    const std::size_t n = plan.n;
    const float* twiddles = plan.twiddles;
    std::size_t span = n;
    const auto other_blocks = [&](std::size_t quarter) {
        twiddles += 6 * quarter;
        span = quarter;
        const BlockBins bins(n, quarter, 0);
        for (std::size_t j = 1; j < 4; ++j) {
            block<false, false, false>(x + 2 * j * quarter, quarter, twiddles, n, bins.at[j], sink);
        }
    };
    real_radix4_stage(x, n / 4, twiddles, input);
    other_blocks(n / 4);
    while (span > 8) {
        real_radix4_stage(x, span / 4, twiddles, [x](std::size_t i) { return x[2 * i]; });
        other_blocks(span / 4);
    }
    for (std::size_t i = 0; i < span; ++i) {
        x[2 * i + 1] = FloatVec{};
    }
    leaf<false, false, true>(x, span, twiddles, n, 0, sink);
}

/// The same bins with every zero as fft_pow2 makes it.
template <class Input, class Sink>
void exact_transform(FloatVec* x, const FftPlanView& plan, Input input, Sink sink) {
    for (std::size_t i = 0; i < plan.n; ++i) {
        store_complex(x, i, {input(i), FloatVec{}});
    }
    block<false, true, true>(x, plan.n, plan.twiddles, plan.n, 0, sink);
}

/// One inverse stage on the spectrum of real data, X[span - k] = conj(X[k]), of which x holds the
/// elements 0 ... span / 2. The columns k and quarter - k have the same sums but for conjugation
/// and turns, which are exact. Block 0 is such a spectrum again, the others are complex.
SORVO_INLINE void hermitian_radix4_stage(FloatVec* x, std::size_t quarter, const float* twiddles) {
    const auto column = [=](std::size_t k, bool alone) {
        const ComplexVec a = load_complex(x, k);
        const ComplexVec b = load_complex(x, quarter + k);
        const ComplexVec c =
            k == 0 ? load_complex(x, 2 * quarter) : conjugate(load_complex(x, 2 * quarter - k));
        const ComplexVec d = conjugate(load_complex(x, quarter - k));
        const ComplexVec ac = a + c;
        const ComplexVec bd = b + d;
        const ComplexVec difference = ac - bd;
        const ComplexVec t1 = turn_back<true>(a - c, b - d);
        const ComplexVec t3 = turn_back<false>(a - c, b - d);
        const float* const w = twiddles + 6 * k;
        store_complex(x, k, ac + bd);
        store_complex(x, quarter + k, multiply(difference, w + 2));
        store_complex(x, 2 * quarter + k, multiply(t1, w));
        store_complex(x, 3 * quarter + k, multiply(t3, w + 4));
        if (!alone) {
            const std::size_t other = quarter - k;
            const float* const v = twiddles + 6 * other;
            store_complex(x, quarter + other, multiply({-difference.re, difference.im}, v + 2));
            store_complex(x, 2 * quarter + other, multiply({-t1.im, -t1.re}, v));
            store_complex(x, 3 * quarter + other, multiply({t3.im, t3.re}, v + 4));
        }
    };
    column(0, true);
    for (std::size_t k = 1; k < quarter / 2; ++k) {
        column(k, false);
    }
    column(quarter / 2, true);
}

/// The inverse transform, without the division by n, of a spectrum of real data, n >= 16; x holds
/// its bins 0 ... n / 2 and room for n.
template <class Sink>
void hermitian_transform(FloatVec* x, const FftPlanView& plan, Sink sink) {
    const float* twiddles = plan.twiddles;
    std::size_t span = plan.n;
    while (span > 8) {
        const std::size_t quarter = span / 4;
        hermitian_radix4_stage(x, quarter, twiddles);
        twiddles += 6 * quarter;
        span = quarter;
        const BlockBins bins(plan.n, quarter, 0);
        for (std::size_t j = 1; j < 4; ++j) {
            block<true, false, false>(x + 2 * j * quarter, quarter, twiddles, plan.n, bins.at[j],
                                      sink);
        }
    }
    for (std::size_t k = span / 2 + 1; k < span; ++k) {
        store_complex(x, k, conjugate(load_complex(x, span - k)));
    }
    leaf<true, false, true>(x, span, twiddles, plan.n, 0, sink);
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
