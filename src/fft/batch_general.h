// Many transforms of any other length side by side, one in each lane: the sums of fft_general. The
// input is read by residue, which makes the reordering passes unnecessary; the stages work in place
// (output u of a column goes to the place of input u), depth first.
//
// The input is real (a FloatVec for each element) for bins 0 ... n / 2, or complex for all n of
// them: what a sink does not use of its values costs nothing. Products::literal takes complex
// input.
#pragma once

#include <type_traits>

#include "fft/columns.h"
#include "fft/fft_plan.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// The twiddles of a column of a stage of a known radix.
template <std::size_t factor>
class ColumnRoots {
  public:
    SORVO_INLINE ColumnRoots(const FftPlanView& /*plan*/, const FftStage& stage)
        : start_(stage.twiddles) {}

    SORVO_INLINE void go_to(std::size_t k) { column_ = start_ + 2 * k * count; }

    SORVO_INLINE Complex<float> operator()(std::size_t u, std::size_t s) const {
        return (*this)(u * (factor - 1) + s - 1);
    }

    SORVO_INLINE Complex<float> operator()(std::size_t i) const { return load_complex(column_, i); }

  private:
    static constexpr std::size_t count = factor == fused_twos ? 6 : factor * (factor - 1);

    const float* start_;
    const float* column_ = nullptr;
};

/// The same for any other factor, looked up one by one.
template <>
class ColumnRoots<any_factor> {
  public:
    SORVO_INLINE ColumnRoots(const FftPlanView& plan, const FftStage& stage)
        : roots_(plan.roots), stage_(stage) {}

    SORVO_INLINE void go_to(std::size_t k) { k_ = k; }

    template <std::size_t group>
    struct Lookup {
        const float* roots;
        std::size_t blocks;
        std::size_t length;
        std::size_t steps[group];  ///< the outputs' places; 0 behind the last
        std::size_t turns[group];  ///< s times that, modulo the length

        SORVO_INLINE Complex<float> operator()(std::size_t i, std::size_t /*s*/) {
            turns[i] += steps[i];
            turns[i] -= turns[i] >= length ? length : 0;
            return load_complex(roots, turns[i] * blocks);
        }
    };

    template <std::size_t group>
    SORVO_INLINE Lookup<group> from(std::size_t u) const {
        Lookup<group> lookup = {roots_, stage_.blocks, stage_.factor * stage_.sub_n, {}, {}};
        for (std::size_t i = 0; i < group; ++i) {
            lookup.steps[i] = u + i < stage_.factor ? k_ + (u + i) * stage_.sub_n : 0;
        }
        return lookup;
    }

  private:
    const float* roots_;
    FftStage stage_;
    std::size_t k_ = 0;
};

/// The twiddles of a direct transform: all of them in registers, if its length has code of its own.
template <std::size_t factor>
class DirectRoots {
  public:
    SORVO_INLINE DirectRoots(const FftPlanView& plan, const FftStage& stage) {
        for (std::size_t j = 0; j < factor; ++j) {
            roots_[j] = broadcast(load_complex(plan.roots, j * stage.blocks));
        }
    }

    SORVO_INLINE ComplexVec operator()(std::size_t u, std::size_t s) const {
        return roots_[u * s % factor];
    }

  private:
    ComplexVec roots_[factor];
};

template <>
class DirectRoots<any_factor> : public ColumnRoots<any_factor> {
  public:
    using ColumnRoots<any_factor>::ColumnRoots;
};

/// How many bins of a transform of length n a sink wants.
template <class Sink>
SORVO_INLINE std::size_t wanted_bins(std::size_t n) {
    return Sink::all_bins ? n : n / 2 + 1;
}

/// Transforms that take up to so much are computed stage by stage, longer ones part by part: parts
/// that stay in the first-level cache, but no more calls than that takes.
constexpr std::size_t stagewise_size = std::size_t{1} << 14;

template <class Input, Products products = Products::needed>
class BatchTransform {
  public:
    BatchTransform(const FftPlanView& plan, FloatVec* scratch, Input input)
        : plan_(plan), one_(load_complex(plan.roots, 0)), scratch_(scratch), input_(input) {}

    /// The bins that the sink wants; `x` is room for the n elements.
    template <class Sink>
    void run(FloatVec* x, Sink sink) const {
        if (plan_.stage_n == 0) {
            with_odd_radix(plan_.n, [&](auto radix) {
                direct_transforms<decltype(radix)::factor, Sink::all_bins>(
                    0, 1, [&](std::size_t) { return sink; });
            });
            return;
        }
        transform_parts(x, 0, 0);
        with_radix(plan_.stages[0].factor,
                   [&](auto radix) { deliver<decltype(radix)::factor>(x, sink); });
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
    static constexpr bool real = std::is_same_v<Value, FloatVec>;
    static_assert(!real || products == Products::needed);

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
        with_radix(plan_.stages[level].factor,
                   [&](auto radix) { join<decltype(radix)::factor>(x, level, count); });
    }

    /// `count` direct transforms from number `first` on.
    void bases(FloatVec* x, std::size_t first, std::size_t count) const {
        with_odd_radix(plan_.base_n, [&](auto radix) {
            direct_transforms<decltype(radix)::factor, true>(first, count, [=](std::size_t i) {
                FloatVec* const to = x + 2 * i * plan_.base_n;
                return [to](std::size_t u, ComplexVec value) { store_complex(to, u, value); };
            });
        });
    }

    template <std::size_t factor>
    [[gnu::noinline]] void join(FloatVec* x, std::size_t level, std::size_t count) const {
        const FftStage& stage = plan_.stages[level];
        const std::size_t sub_n = stage.sub_n;
        const std::size_t n = factor != any_factor ? factor : stage.factor;
        ColumnRoots<factor> w(plan_, stage);
        for (; count != 0; --count, x += 2 * n * sub_n) {
            std::size_t k = 0;
            // The first outputs of transforms of real data are real.
            if constexpr (real && factor != fused_twos && factor != any_factor) {
                if (level + 1 == plan_.stage_n) {
                    w.go_to(0);
                    Column<factor>::template transform<products, true>(
                        one_, w, scratch_, n, n, [=](std::size_t s) { return x[2 * s * sub_n]; },
                        [=](std::size_t u, ComplexVec sum) { store_complex(x, u * sub_n, sum); });
                    k = 1;
                }
            }
            for (; k < sub_n; ++k) {
                w.go_to(k);
                Column<factor>::template transform<products>(
                    one_, w, scratch_, n, n,
                    [=](std::size_t s) { return load_complex(x, k + s * sub_n); },
                    [=](std::size_t u, ComplexVec sum) { store_complex(x, k + u * sub_n, sum); });
            }
        }
    }

    /// The outermost stage: the bins that the sink wants.
    template <std::size_t factor, class Sink>
    [[gnu::noinline]] void deliver(const FloatVec* x, Sink sink) const {
        const FftStage& stage = plan_.stages[0];
        const std::size_t sub_n = stage.sub_n;
        const std::size_t bin_n = wanted_bins<Sink>(plan_.n);
        ColumnRoots<factor> w(plan_, stage);
        for (std::size_t k = 0; k < sub_n; ++k) {
            w.go_to(k);
            const std::size_t output_n = Sink::all_bins && factor != any_factor ? factor
                                         : k < bin_n ? (bin_n - 1 - k) / sub_n + 1
                                                     : 0;
            Column<factor>::template transform<products>(
                one_, w, scratch_, stage.factor, output_n,
                [=](std::size_t s) { return load_complex(x, k + s * sub_n); },
                [&](std::size_t u, ComplexVec sum) { sink(k + u * sub_n, sum); });
        }
    }

    /// put_of(i) takes the outputs of the i-th of `count` transforms, or those up to half the
    /// length.
    template <std::size_t factor, bool all, class PutOf>
    [[gnu::noinline]] void direct_transforms(std::size_t first, std::size_t count,
                                             PutOf put_of) const {
        const std::size_t n = factor != any_factor ? factor : plan_.base_n;
        const std::size_t output_n = all ? n : n / 2 + 1;
        const std::size_t step = plan_.n / n;
        const FftStage stage = {n, 1, step, nullptr};
        // For every product of a sum of seven compilers would put aside more than 4 KiB of vectors.
        constexpr bool too_many = factor == 7 && products == Products::literal;
        constexpr std::size_t code = too_many ? any_factor : factor;
        DirectRoots<code> w(plan_, stage);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t start = plan_.base_starts[first + i];
            Column<code>::template transform<products, true>(
                one_, w, scratch_, n, output_n,
                [&](std::size_t s) {
                    const Value value = input_(start + s * step);
                    return s == 0 && products == Products::needed ? at_least_zero(value) : value;
                },
                put_of(i));
        }
    }

    const FftPlanView& plan_;
    Complex<float> one_;
    FloatVec* scratch_;
    Input input_;
};

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
