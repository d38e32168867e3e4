// Many transforms of a power of two side by side, one in each lane: the arithmetic of fft_pow2, in
// place, depth first, so that the smaller transforms stay in the first-level cache. The bit
// reversal is only the bin to which a leaf delivers, and where bins 0 ... n / 2 are wanted, the
// last pass makes these alone.
//
// A sink takes the bins: sink(bin, value); Sink::all_bins says whether it wants all n or 0 ... n
// / 2.
#pragma once

#include "fft/butterflies.h"
#include "fft/fft_plan.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// Those of column k; `stage` are the plan's for the stage.
SORVO_INLINE Radix4Twiddles<float> column_twiddles(const float* stage, std::size_t k) {
    const float* const w = stage + 6 * k;
    return {{w[0], w[1]}, {w[2], w[3]}, {w[4], w[5]}};
}

SORVO_INLINE void load_column(ComplexVec (&x)[4], const FloatVec* from, std::size_t quarter,
                              std::size_t k) {
    for (std::size_t i = 0; i < 4; ++i) {
        x[i] = load_complex(from, k + i * quarter);
    }
}

/// The butterfly of column k, whose twiddles are all 1 for k = 0.
template <bool inverse, Products products>
SORVO_INLINE void radix4_column(ComplexVec (&x)[4], const float* twiddles, std::size_t k) {
    if (products == Products::literal || k != 0) {
        radix4<inverse>(x, column_twiddles(twiddles, k));
    } else {
        radix4<inverse>(x);
    }
}

template <bool inverse, Products products>
SORVO_INLINE void transform_column(FloatVec* data, std::size_t quarter, std::size_t k,
                                   const float* twiddles) {
    ComplexVec x[4];
    load_column(x, data, quarter, k);
    radix4_column<inverse, products>(x, twiddles, k);
    for (std::size_t i = 0; i < 4; ++i) {
        store_complex(data, k + i * quarter, x[i]);
    }
}

template <bool inverse, Products products>
[[gnu::noinline]] void radix4_stage(FloatVec* x, std::size_t quarter, const float* twiddles) {
    transform_column<inverse, products>(x, quarter, 0, twiddles);
    for (std::size_t k = 1; k < quarter; ++k) {
        transform_column<inverse, Products::literal>(x, quarter, k, twiddles);
    }
}

/// The stage on real data, of which input(i) is element i. Block 0 becomes real data again, in the
/// even vectors; the others become complex.
template <class Input>
SORVO_INLINE void real_radix4_stage(FloatVec* x, std::size_t quarter, const float* twiddles,
                                    Input input) {
    for (std::size_t k = 0; k < quarter; ++k) {
        const FloatVec column[4] = {input(k), input(k + quarter), input(k + 2 * quarter),
                                    input(k + 3 * quarter)};
        ComplexVec outputs[3];
        real_radix4(x[2 * k], outputs, column, column_twiddles(twiddles, k));
        for (std::size_t i = 0; i < 3; ++i) {
            store_complex(x, k + (i + 1) * quarter, outputs[i]);
        }
    }
}

/// The last four elements of a transform whose log2 is even. Elements 0 and 2 are bins below n / 2;
/// element 1 of the very first leaf is bin n / 2.
template <bool inverse, Products products, bool first, class Sink>
SORVO_INLINE void leaf4(const FloatVec* data, const float* twiddles, std::size_t n, std::size_t bin,
                        Sink sink) {
    ComplexVec x[4];
    load_column(x, data, 1, 0);
    radix4_column<inverse, products>(x, twiddles, 0);
    sink(bin, x[0]);
    sink(bin + n / 4, x[2]);
    if (first || Sink::all_bins) {
        sink(bin + n / 2, x[1]);
    }
    if (Sink::all_bins) {
        sink(bin + n / 2 + n / 4, x[3]);
    }
}

/// The last eight elements where log2(n) is odd: a radix-4 stage of two columns and the radix-2
/// pass, of whose results only the sums (and the first difference) are bins up to n / 2.
template <bool inverse, Products products, bool first, class Sink>
SORVO_INLINE void leaf8(const FloatVec* data, const float* twiddles, std::size_t n, std::size_t bin,
                        Sink sink) {
    ComplexVec x[2][4];
    for (std::size_t k = 0; k < 2; ++k) {
        load_column(x[k], data, 2, k);
        radix4_column<inverse, products>(x[k], twiddles, k);
    }
    const std::size_t bins[4] = {bin, bin + n / 4, bin + n / 8, bin + n / 4 + n / 8};
    for (std::size_t j = 0; j < 4; ++j) {
        sink(bins[j], x[0][j] + x[1][j]);
        if (Sink::all_bins || (first && j == 0)) {
            sink(bins[j] + n / 2, x[0][j] - x[1][j]);
        }
    }
}

template <bool inverse, Products products, bool first, class Sink>
SORVO_INLINE void leaf(const FloatVec* x, std::size_t span, const float* twiddles, std::size_t n,
                       std::size_t bin, Sink sink) {
    if (span == 4) {
        leaf4<inverse, products, first>(x, twiddles, n, bin, sink);
    } else {
        leaf8<inverse, products, first>(x, twiddles, n, bin, sink);
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
template <bool inverse, Products products, bool first, class Sink>
[[gnu::noinline]] void block(FloatVec* x, std::size_t span, const float* twiddles, std::size_t n,
                             std::size_t bin, Sink sink) {
    if (span <= 8) {
        leaf<inverse, products, first>(x, span, twiddles, n, bin, sink);
        return;
    }
    const std::size_t quarter = span / 4;
    radix4_stage<inverse, products>(x, quarter, twiddles);
    const float* const next = twiddles + 6 * quarter;
    const BlockBins bins(n, quarter, bin);
    if (quarter <= 8) {
        leaf<inverse, products, first>(x, quarter, next, n, bins.at[0], sink);
        for (std::size_t j = 1; j < 4; ++j) {
            leaf<inverse, products, false>(x + 2 * j * quarter, quarter, next, n, bins.at[j], sink);
        }
        return;
    }
    block<inverse, products, first>(x, quarter, next, n, bins.at[0], sink);
    for (std::size_t j = 1; j < 4; ++j) {
        block<inverse, products, false>(x + 2 * j * quarter, quarter, next, n, bins.at[j], sink);
    }
}

/// Bins 0 ... n / 2 of real data input(0 ... n - 1), n >= 16, by Products::needed.
template <class Input, class Sink>
void batch_real_pow2(FloatVec* x, const FftPlanView& plan, Input input, Sink sink) {
    const std::size_t n = plan.n;
    const float* twiddles = plan.twiddles;
    std::size_t span = n;
    const auto other_blocks = [&](std::size_t quarter) {
        twiddles += 6 * quarter;
        span = quarter;
        const BlockBins bins(n, quarter, 0);
        for (std::size_t j = 1; j < 4; ++j) {
            block<false, Products::needed, false>(x + 2 * j * quarter, quarter, twiddles, n,
                                                  bins.at[j], sink);
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
    leaf<false, Products::needed, true>(x, span, twiddles, n, 0, sink);
}

/// The bins that the sink wants of complex data, by Products::literal.
template <bool inverse, class Input, class Sink>
void batch_literal_pow2(FloatVec* x, const FftPlanView& plan, Input input, Sink sink) {
    for (std::size_t i = 0; i < plan.n; ++i) {
        store_complex(x, i, input(i));
    }
    block<inverse, Products::literal, true>(x, plan.n, plan.twiddles, plan.n, 0, sink);
}

/// One inverse stage on the spectrum of real data, X[span - k] = conj(X[k]), of which x holds the
/// elements 0 ... span / 2. The columns k and quarter - k have the same sums but for conjugation
/// and turns, which are exact. Block 0 is such a spectrum again, the others are complex.
SORVO_INLINE void hermitian_radix4_stage(FloatVec* x, std::size_t quarter, const float* twiddles) {
    const auto column = [=](std::size_t k, bool alone) {
        ComplexVec y[4] = {
            load_complex(x, k), load_complex(x, quarter + k),
            k == 0 ? load_complex(x, 2 * quarter) : conjugate(load_complex(x, 2 * quarter - k)),
            conjugate(load_complex(x, quarter - k))};
        radix4<true>(y);
        const auto store_outputs = [=](std::size_t at, ComplexVec y1, ComplexVec y2,
                                       ComplexVec y3) {
            const Radix4Twiddles<float> w = column_twiddles(twiddles, at);
            store_complex(x, quarter + at, w.w2 * y1);
            store_complex(x, 2 * quarter + at, w.w1 * y2);
            store_complex(x, 3 * quarter + at, w.w3 * y3);
        };
        store_complex(x, k, y[0]);
        store_outputs(k, y[1], y[2], y[3]);
        if (!alone) {
            store_outputs(quarter - k, {-y[1].re, y[1].im}, {-y[2].im, -y[2].re},
                          {y[3].im, y[3].re});
        }
    };
    column(0, true);
    for (std::size_t k = 1; k < quarter / 2; ++k) {
        column(k, false);
    }
    column(quarter / 2, true);
}

/// The inverse transform, without the division by n, of a spectrum of real data, n >= 16; x holds
/// its bins 0 ... n / 2 and room for n. By Products::needed.
template <class Sink>
void batch_hermitian_pow2(FloatVec* x, const FftPlanView& plan, Sink sink) {
    const float* twiddles = plan.twiddles;
    std::size_t span = plan.n;
    while (span > 8) {
        const std::size_t quarter = span / 4;
        hermitian_radix4_stage(x, quarter, twiddles);
        twiddles += 6 * quarter;
        span = quarter;
        const BlockBins bins(plan.n, quarter, 0);
        for (std::size_t j = 1; j < 4; ++j) {
            block<true, Products::needed, false>(x + 2 * j * quarter, quarter, twiddles, plan.n,
                                                 bins.at[j], sink);
        }
    }
    for (std::size_t k = span / 2 + 1; k < span; ++k) {
        store_complex(x, k, conjugate(load_complex(x, span - k)));
    }
    leaf<true, Products::needed, true>(x, span, twiddles, plan.n, 0, sink);
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
