// The input of one transform whose own elements are the lanes.
#pragma once

#include <type_traits>

#include "fft/columns.h"
#include "fft/one_plan.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// Real (FloatVec) or complex elements, in memory one after the other. With Products::literal all
/// are complex when they come out.
template <class T, Products products>
class Elements {
  public:
    using Value = std::conditional_t<products == Products::literal, ComplexVec, T>;

    /// `tail` is room for input_tail_n floats: the last elements again, with zeros behind them.
    Elements(const float* src, std::size_t n, float* tail)
        : src_(src), tail_(tail), tail_start_(n < lane_n ? 0 : n - lane_n) {
        const std::size_t kept = float_n * (n < lane_n ? n : lane_n);
        for (std::size_t i = 0; i < 2 * float_n; ++i) {
            store(tail + i * lane_n, FloatVec{});
        }
        __builtin_memcpy(tail, src + tail_start_ * float_n, kept * sizeof(float));
    }

    /// The elements i, i + 1, ... in the lanes.
    SORVO_INLINE Value run(std::size_t i) const {
        const float* const from =
            i < tail_start_ ? src_ + i * float_n : tail_ + (i - tail_start_) * float_n;
        if constexpr (real) {
            return value_of(load(from));
        } else {
            ComplexVec value;
            unzip(value.re, value.im, load(from), load(from + lane_n));
            return value;
        }
    }

    /// Element i in all lanes.
    SORVO_INLINE Value at(std::size_t i) const {
        if constexpr (real) {
            return value_of(broadcast(src_[i]));
        } else {
            return {broadcast(src_[2 * i]), broadcast(src_[2 * i + 1])};
        }
    }

  private:
    static constexpr bool real = std::is_same_v<T, FloatVec>;
    static constexpr std::size_t float_n = real ? 1 : 2;

    SORVO_INLINE static Value value_of(FloatVec x) {
        if constexpr (products == Products::literal) {
            return as_complex(x);
        } else {
            return x;
        }
    }

    const float* src_;
    const float* tail_;
    std::size_t tail_start_;
};

/// The input of the inner transforms of the residues first, first + 1, ...
template <class Elements>
struct ResidueInput {
    using Value = typename Elements::Value;

    const Elements& elements;
    std::size_t first;

    SORVO_INLINE Value operator()(std::size_t i) const { return elements.run(first + i); }
};

/// The input of all inner transforms at once, in the order of their results.
template <class Elements>
struct OrderedInput {
    using Value = typename Elements::Value;

    const Elements& elements;
    BitsVec residues;

    SORVO_INLINE Value operator()(std::size_t i) const { return ordered(elements.run(i)); }

  private:
    SORVO_INLINE FloatVec ordered(FloatVec x) const { return permute(x, residues); }
    SORVO_INLINE ComplexVec ordered(ComplexVec x) const { return {ordered(x.re), ordered(x.im)}; }
};

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
