// The input of one transform whose own elements are the lanes.
#pragma once

#include "fft/lane_fft_general.inl"
#include "simd/complex.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

SORVO_INLINE FloatVec load_element(const float* src, const FloatVec*) {
    return load(src);
}

SORVO_INLINE ComplexVec load_element(const float* src, const ComplexVec*) {
    ComplexVec value;
    unzip(value.re, value.im, load(src), load(src + lane_n));
    return value;
}

SORVO_INLINE FloatVec broadcast_element(const float* src, const FloatVec*) {
    return broadcast(src[0]);
}

SORVO_INLINE ComplexVec broadcast_element(const float* src, const ComplexVec*) {
    return {broadcast(src[0]), broadcast(src[1])};
}

/// The input: real (FloatVec) or complex elements, in memory one after the other.
template <class T>
class Elements {
  public:
    using Value = T;

    /// `tail` is room for single_tail_n floats: the last elements again, with zeros behind them.
    Elements(const float* src, std::size_t n, float* tail)
        : src_(src), tail_(tail), tail_start_(n < lane_n ? 0 : n - lane_n) {
        for (std::size_t i = 0; i < 2 * float_n; ++i) {
            store(tail + i * lane_n, FloatVec{});
        }
        if (n >= lane_n) {
            for (std::size_t i = 0; i < float_n; ++i) {
                store(tail + i * lane_n, load(src + tail_start_ * float_n + i * lane_n));
            }
        } else {
            for (std::size_t i = 0; i < n * float_n; ++i) {
                tail[i] = src[i];
            }
        }
    }

    /// The elements i, i + 1, ... in the lanes.
    SORVO_INLINE Value run(std::size_t i) const {
        const float* const from =
            i < tail_start_ ? src_ + i * float_n : tail_ + (i - tail_start_) * float_n;
        return load_element(from, static_cast<Value*>(nullptr));
    }

    /// Element i in all lanes.
    SORVO_INLINE Value at(std::size_t i) const {
        return broadcast_element(src_ + i * float_n, static_cast<Value*>(nullptr));
    }

  private:
    static constexpr std::size_t float_n = is_real(static_cast<T*>(nullptr)) ? 1 : 2;

    const float* src_;
    const float* tail_;
    std::size_t tail_start_;
};

/// The input of the transforms of the residues first, first + 1, ...
template <class T>
struct ResidueInput {
    using Value = T;

    const Elements<T>& elements;
    std::size_t first;

    SORVO_INLINE Value operator()(std::size_t i) const { return elements.run(first + i); }
};

/// The input of the transforms of all residues, in the order of their rows.
template <class T>
struct RowInput {
    using Value = T;

    const Elements<T>& elements;
    const std::uint32_t* order;

    SORVO_INLINE Value operator()(std::size_t i) const { return in_order(elements.run(i)); }

  private:
    SORVO_INLINE FloatVec in_order(FloatVec x) const { return permute(x, order); }
    SORVO_INLINE ComplexVec in_order(ComplexVec x) const {
        return {permute(x.re, order), permute(x.im, order)};
    }
};

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
