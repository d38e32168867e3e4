// Transforms of any other length in all lanes: the sums of fft_general. The input is read by
// residue, which makes the reordering passes unnecessary; the stages work in place (output u of a
// column goes to the slot of input u), depth first.
//
// The input is real (a FloatVec for each element) for bins 0 ... n / 2, or complex for all n of
// them: what a sink does not use of its values costs nothing.
//
// Every sum starts from +0 and so never becomes -0. Therefore the products with a zero imaginary
// part, with the root (1, -0) and the addition to the first 0 change nothing and are left out; data
// must be finite.
#pragma once

#include "fft/fft_plan.h"
#include "simd/complex.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// Adds w y to the sum.
SORVO_INLINE void add_product(ComplexVec& sum, const float* w, ComplexVec y) {
    sum.re += w[0] * y.re - w[1] * y.im;
    sum.im += w[1] * y.re + w[0] * y.im;
}

/// One column of a stage: outputs 0, 1, ... output_n - 1, each y[0] + w y[1] + w' y[2] + ...
template <std::size_t factor, class Put>
SORVO_INLINE void sum_column(const ComplexVec* y, const float* w, std::size_t output_n, Put put) {
    for (std::size_t u = 0; u < output_n; ++u) {
        ComplexVec sum = y[0];
        for (std::size_t s = 1; s < factor; ++s) {
            add_product(sum, w + 2 * (u * (factor - 1) + s - 1), y[s]);
        }
        put(u, sum);
    }
}

template <std::size_t factor>
SORVO_INLINE void load_column(ComplexVec* y, const FloatVec* x, std::size_t sub_n, std::size_t k) {
    for (std::size_t s = 0; s < factor; ++s) {
        y[s] = load_complex(x, k + s * sub_n);
    }
}

/// Column 0 of that stage: the first outputs of transforms of real data are real, and the roots of
/// output 0 are 1.
template <std::size_t factor>
SORVO_INLINE void join_real_column(FloatVec* x, std::size_t sub_n, const float* w) {
    FloatVec y[factor];
    ComplexVec total = {x[0], FloatVec{}};
    y[0] = x[0];
    for (std::size_t s = 1; s < factor; ++s, w += 2) {
        y[s] = x[2 * s * sub_n];
        total.re += y[s];
    }
    store_complex(x, 0, total);
    for (std::size_t u = 1; u < factor; ++u) {
        ComplexVec sum = {y[0], FloatVec{}};
        for (std::size_t s = 1; s < factor; ++s, w += 2) {
            sum.re += w[0] * y[s];
            sum.im += w[1] * y[s];
        }
        store_complex(x, u * sub_n, sum);
    }
}

/// A stage of `count` transforms one after the other, in place; with `real_column` it is the
/// innermost one of real data.
template <std::size_t factor>
[[gnu::noinline]] void join(FloatVec* x, const FftStage& stage, std::size_t count,
                            bool real_column) {
    const std::size_t sub_n = stage.sub_n;
    for (; count != 0; --count, x += 2 * factor * sub_n) {
        const float* w = stage.twiddles;
        std::size_t k = 0;
        if (real_column) {
            join_real_column<factor>(x, sub_n, w);
            w += 2 * factor * (factor - 1);
            k = 1;
        }
        for (; k < sub_n; ++k, w += 2 * factor * (factor - 1)) {
            ComplexVec y[factor];
            load_column<factor>(y, x, sub_n, k);
            sum_column<factor>(y, w, factor, [=](std::size_t u, ComplexVec sum) {
                store_complex(x, k + u * sub_n, sum);
            });
        }
    }
}

/// How many bins of a transform of length n a sink wants.
template <class Sink>
SORVO_INLINE std::size_t wanted_bins(std::size_t n) {
    return Sink::all_bins ? n : n / 2 + 1;
}

/// The outermost stage: the bins that the sink wants.
template <std::size_t factor, class Sink>
[[gnu::noinline]] void deliver(const FloatVec* x, const FftStage& stage, Sink sink) {
    const std::size_t sub_n = stage.sub_n;
    const std::size_t bin_n = wanted_bins<Sink>(factor * sub_n);
    const float* w = stage.twiddles;
    for (std::size_t k = 0; k < sub_n; ++k, w += 2 * factor * (factor - 1)) {
        ComplexVec y[factor];
        load_column<factor>(y, x, sub_n, k);
        const std::size_t output_n = k < bin_n ? (bin_n - 1 - k) / sub_n + 1 : 0;
        sum_column<factor>(y, w, output_n,
                           [&](std::size_t u, ComplexVec sum) { sink(k + u * sub_n, sum); });
    }
}

SORVO_INLINE ComplexVec plus_product(ComplexVec a, const float* w, ComplexVec b) {
    add_product(a, w, b);
    return a;
}

/// Two stages of factor 2: columns k and k + sub_n of the outer one are fed by column k of the two
/// inner ones.
[[gnu::noinline]] void join_fused_twos(FloatVec* x, const FftStage& stage, std::size_t count) {
    const std::size_t sub_n = stage.sub_n;
    for (; count != 0; --count, x += 8 * sub_n) {
        const float* w = stage.twiddles;
        for (std::size_t k = 0; k < sub_n; ++k, w += 12) {
            ComplexVec y[4];
            load_column<4>(y, x, sub_n, k);
            const ComplexVec a = plus_product(y[0], w, y[1]);
            const ComplexVec b = plus_product(y[2], w, y[3]);
            store_complex(x, k, plus_product(a, w + 4, b));
            store_complex(x, k + 2 * sub_n, plus_product(a, w + 6, b));
            const ComplexVec c = plus_product(y[0], w + 2, y[1]);
            const ComplexVec d = plus_product(y[2], w + 2, y[3]);
            store_complex(x, k + sub_n, plus_product(c, w + 8, d));
            store_complex(x, k + 3 * sub_n, plus_product(c, w + 10, d));
        }
    }
}

template <class Sink>
[[gnu::noinline]] void deliver_fused_twos(const FloatVec* x, const FftStage& stage, Sink sink) {
    const std::size_t sub_n = stage.sub_n;
    const float* w = stage.twiddles;
    for (std::size_t k = 0; k < sub_n; ++k, w += 12) {
        ComplexVec y[4];
        load_column<4>(y, x, sub_n, k);
        const ComplexVec a = plus_product(y[0], w, y[1]);
        const ComplexVec b = plus_product(y[2], w, y[3]);
        sink(k, plus_product(a, w + 4, b));
        if (Sink::all_bins || k == 0) {
            sink(k + 2 * sub_n, plus_product(a, w + 6, b));
        }
        const ComplexVec c = plus_product(y[0], w + 2, y[1]);
        const ComplexVec d = plus_product(y[2], w + 2, y[3]);
        sink(k + sub_n, plus_product(c, w + 8, d));
        if (Sink::all_bins) {
            sink(k + 3 * sub_n, plus_product(c, w + 10, d));
        }
    }
}

/// A stage of any factor; its roots are looked up, the column goes to `scratch` first.
template <class Put>
SORVO_INLINE void sum_any_column(const FloatVec* x, const FftStage& stage, const float* roots,
                                 std::size_t k, std::size_t bin_n, FloatVec* scratch, Put put) {
    const std::size_t sub_n = stage.sub_n;
    const std::size_t length = stage.factor * sub_n;
    for (std::size_t s = 0; s < stage.factor; ++s) {
        store_complex(scratch, s, load_complex(x, k + s * sub_n));
    }
    for (std::size_t output = k; output < bin_n; output += sub_n) {
        ComplexVec sum = load_complex(scratch, 0);
        std::size_t turn = 0;  // s output mod length
        for (std::size_t s = 1; s < stage.factor; ++s) {
            turn += output;
            turn -= turn >= length ? length : 0;
            add_product(sum, roots + 2 * turn * stage.blocks, load_complex(scratch, s));
        }
        put(output, sum);
    }
}

[[gnu::noinline]] void join_any(FloatVec* x, const FftStage& stage, std::size_t count,
                                const float* roots, FloatVec* scratch) {
    const std::size_t bin_n = stage.factor * stage.sub_n;
    for (; count != 0; --count, x += 2 * bin_n) {
        for (std::size_t k = 0; k < stage.sub_n; ++k) {
            sum_any_column(
                x, stage, roots, k, bin_n, scratch,
                [=](std::size_t output, ComplexVec sum) { store_complex(x, output, sum); });
        }
    }
}

template <class Sink>
[[gnu::noinline]] void deliver_any(const FloatVec* x, const FftStage& stage, const float* roots,
                                   FloatVec* scratch, Sink sink) {
    const std::size_t bin_n = wanted_bins<Sink>(stage.factor * stage.sub_n);
    for (std::size_t k = 0; k < stage.sub_n; ++k) {
        sum_any_column(x, stage, roots, k, bin_n, scratch, sink);
    }
}

SORVO_INLINE FloatVec at_least_zero(FloatVec x) {
    return x + FloatVec{};  // -0 becomes +0, as in a sum
}

SORVO_INLINE ComplexVec first_term(FloatVec x) {
    return {at_least_zero(x), FloatVec{}};
}

SORVO_INLINE ComplexVec first_term(ComplexVec x) {
    return {at_least_zero(x.re), at_least_zero(x.im)};
}

SORVO_INLINE void add_product(ComplexVec& sum, ComplexVec w, FloatVec x) {
    sum.re += w.re * x;
    sum.im += w.im * x;
}

SORVO_INLINE void add_product(ComplexVec& sum, ComplexVec w, ComplexVec x) {
    sum.re += w.re * x.re - w.im * x.im;
    sum.im += w.im * x.re + w.re * x.im;
}

SORVO_INLINE void add(ComplexVec& sum, FloatVec x) {
    sum.re += x;
}

SORVO_INLINE void add(ComplexVec& sum, ComplexVec x) {
    sum = sum + x;
}

/// The direct transform of the elements input(0 ... n - 1); w[j] are the roots of 1.
template <std::size_t n, class Input, class Put>
SORVO_INLINE void base(const ComplexVec* w, Input input, Put put) {
    decltype(input(0)) x[n];
    x[0] = input(0);
    const ComplexVec first = first_term(x[0]);
    ComplexVec sum = first;
    for (std::size_t j = 1; j < n; ++j) {
        x[j] = input(j);
        add(sum, x[j]);
    }
    put(0, sum);
    for (std::size_t k = 1; k < n; ++k) {
        sum = first;
        for (std::size_t j = 1; j < n; ++j) {
            add_product(sum, w[j * k % n], x[j]);
        }
        put(k, sum);
    }
}

/// The same for any n, the first bin_n outputs alone, four at a time.
template <class Value, class Put>
SORVO_INLINE void base_any(const Value* x, std::size_t n, const float* roots, std::size_t blocks,
                           std::size_t bin_n, Put put) {
    constexpr std::size_t group = 4;
    for (std::size_t first = 0; first < bin_n; first += group) {
        ComplexVec sums[group];
        std::size_t steps[group];  // the outputs k of the group; 0 where there is none
        std::size_t turns[group];  // j k mod n
        for (std::size_t i = 0; i < group; ++i) {
            sums[i] = first_term(x[0]);
            steps[i] = first + i < n ? first + i : 0;
            turns[i] = 0;
        }
        for (std::size_t j = 1; j < n; ++j) {
            for (std::size_t i = 0; i < group; ++i) {
                turns[i] += steps[i];
                turns[i] -= turns[i] >= n ? n : 0;
                const float* const w = roots + 2 * turns[i] * blocks;
                add_product(sums[i], ComplexVec{broadcast(w[0]), broadcast(w[1])}, x[j]);
            }
        }
        for (std::size_t i = 0; i < group && first + i < bin_n; ++i) {
            put(first + i, sums[i]);
        }
    }
}

SORVO_INLINE constexpr bool is_real(const FloatVec*) {
    return true;
}

SORVO_INLINE constexpr bool is_real(const ComplexVec*) {
    return false;
}

/// Transforms that take up to so much are computed stage by stage, longer ones part by part: parts
/// that stay in the first-level cache, but no more calls than that takes.
constexpr std::size_t stagewise_size = std::size_t{1} << 14;

template <class Input>
class GeneralTransform {
  public:
    GeneralTransform(const FftPlanView& plan, FloatVec* scratch, Input input)
        : plan_(plan), scratch_(scratch), input_(input) {}

    /// The bins that the sink wants; `x` is room for the n elements.
    template <class Sink>
    void run(FloatVec* x, Sink sink) const {
        if (plan_.stage_n == 0) {
            load_base(0);
            base_any(base_values(), plan_.n, plan_.roots, 1, wanted_bins<Sink>(plan_.n), sink);
            return;
        }
        const FftStage& stage = plan_.stages[0];
        transform_parts(x, 0, 0);
        switch (stage.factor) {
            case 2:
                deliver<2>(x, stage, sink);
                break;
            case 3:
                deliver<3>(x, stage, sink);
                break;
            case fused_twos:
                deliver_fused_twos(x, stage, sink);
                break;
            case 5:
                deliver<5>(x, stage, sink);
                break;
            case 7:
                deliver<7>(x, stage, sink);
                break;
            default:
                deliver_any(x, stage, plan_.roots, scratch_, sink);
        }
    }

    /// The stages from `level` inwards alone: the transform of every element of which the index is
    /// a multiple of the factors of the stages before.
    void run_inner(FloatVec* x, std::size_t level) const {
        if (level == plan_.stage_n) {
            bases(x, 0, 1);
        } else {
            transform_parts(x, level, 0);
            join_parts(x, level, 1);
        }
    }

  private:
    using Value = typename Input::Value;  // FloatVec or ComplexVec

    /// The transforms that one block of stage `level` joins; the first of their direct transforms
    /// is number `first_base`.
    void transform_parts(FloatVec* x, std::size_t level, std::size_t first_base) const {
        const FftStage& stage = plan_.stages[level];
        const std::size_t length = stage.factor * stage.sub_n;
        if (level + 1 == plan_.stage_n || length * sizeof(ComplexVec) <= stagewise_size) {
            bases(x, first_base, length / plan_.base_n);
            for (std::size_t inner = plan_.stage_n - 1; inner > level; --inner) {
                join_parts(x, inner, plan_.stages[inner].blocks / stage.blocks);
            }
            return;
        }
        for (std::size_t r = 0; r < stage.factor; ++r) {
            FloatVec* const part = x + 2 * r * stage.sub_n;
            transform_parts(part, level + 1, first_base + r * stage.sub_n / plan_.base_n);
            join_parts(part, level + 1, 1);
        }
    }

    /// `count` blocks of a stage.
    void join_parts(FloatVec* x, std::size_t level, std::size_t count) const {
        const FftStage& stage = plan_.stages[level];
        const bool real = is_real(static_cast<Value*>(nullptr)) && level + 1 == plan_.stage_n;
        switch (stage.factor) {
            case 2:
                join<2>(x, stage, count, real);
                break;
            case 3:
                join<3>(x, stage, count, real);
                break;
            case fused_twos:
                join_fused_twos(x, stage, count);
                break;
            case 5:
                join<5>(x, stage, count, real);
                break;
            case 7:
                join<7>(x, stage, count, real);
                break;
            default:
                join_any(x, stage, count, plan_.roots, scratch_);
        }
    }

    /// `count` direct transforms from number `first` on.
    void bases(FloatVec* x, std::size_t first, std::size_t count) const {
        switch (plan_.base_n) {
            case 3:
                base_loop<3>(x, first, count);
                break;
            case 5:
                base_loop<5>(x, first, count);
                break;
            case 7:
                base_loop<7>(x, first, count);
                break;
            default:
                base_loop_any(x, first, count);
        }
    }

    template <std::size_t n>
    [[gnu::noinline]] void base_loop(FloatVec* x, std::size_t first, std::size_t count) const {
        const std::size_t step = plan_.n / n;
        ComplexVec w[n];
        for (std::size_t j = 0; j < n; ++j) {
            const float* const root = plan_.roots + 2 * j * step;
            w[j] = {broadcast(root[0]), broadcast(root[1])};
        }
        for (std::size_t i = 0; i < count; ++i, x += 2 * n) {
            const std::size_t start = plan_.base_starts[first + i];
            base<n>(
                w, [&](std::size_t j) { return input_(start + j * step); },
                [=](std::size_t k, ComplexVec value) { store_complex(x, k, value); });
        }
    }

    [[gnu::noinline]] void base_loop_any(FloatVec* x, std::size_t first, std::size_t count) const {
        const std::size_t n = plan_.base_n;
        for (std::size_t i = 0; i < count; ++i, x += 2 * n) {
            load_base(plan_.base_starts[first + i]);
            base_any(base_values(), n, plan_.roots, plan_.n / n, n,
                     [=](std::size_t k, ComplexVec value) { store_complex(x, k, value); });
        }
    }

    void load_base(std::size_t start) const {
        for (std::size_t j = 0; j < plan_.base_n; ++j) {
            base_values()[j] = input_(start + j * (plan_.n / plan_.base_n));
        }
    }

    Value* base_values() const { return reinterpret_cast<Value*>(scratch_); }

    const FftPlanView& plan_;
    FloatVec* scratch_;
    Input input_;
};

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
