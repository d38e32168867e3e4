// The input of one transform whose own elements are the lanes.
#pragma once

#include "fft/lane_fft_general.inl"
#include "fft/lane_moves.inl"
#include "util/lanes.inl"

namespace sorvo::audio {
namespace {

SORVO_INLINE Pack load_element(const float* src, const Pack*) {
    return load(src);
}

SORVO_INLINE Complex load_element(const float* src, const Complex*) {
    Complex value;
    separate(value.re, value.im, load(src), load(src + lane_n));
    return value;
}

SORVO_INLINE Pack broadcast_element(const float* src, const Pack*) {
    return broadcast(src[0]);
}

SORVO_INLINE Complex broadcast_element(const float* src, const Complex*) {
    return {broadcast(src[0]), broadcast(src[1])};
}

/// The input: real (Pack) or complex elements, in memory one after the other.
template <class T>
class Elements {
  public:
    using Value = T;

    /// `tail` is room for single_tail_n floats: the last elements again, with zeros behind them.
    Elements(const float* src, std::size_t n, float* tail)
        : src_(src), tail_(tail), tail_start_(n < lane_n ? 0 : n - lane_n) {
        for (std::size_t i = 0; i < 2 * float_n; ++i) {
            store(tail + i * lane_n, Pack{});
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

/// An order of lanes: lane i of the result of in_order() is lane order[i] of x.
#if defined(__AVX512F__)

using LaneOrder = __m512i;

SORVO_INLINE LaneOrder load_order(const std::uint32_t* order) {
    return _mm512_loadu_si512(order);
}

SORVO_INLINE Pack in_order(Pack x, LaneOrder order) {
    return _mm512_permutexvar_ps(order, x);
}

#elif defined(__AVX2__)

using LaneOrder = __m256i;

SORVO_INLINE LaneOrder load_order(const std::uint32_t* order) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(order));
}

SORVO_INLINE Pack in_order(Pack x, LaneOrder order) {
    return _mm256_permutevar8x32_ps(x, order);
}

#else

using LaneOrder = const std::uint32_t*;

SORVO_INLINE LaneOrder load_order(const std::uint32_t* order) {
    return order;
}

SORVO_INLINE Pack in_order(Pack x, LaneOrder order) {
    return Pack{x[order[0]], x[order[1]], x[order[2]], x[order[3]]};
}

#endif

SORVO_INLINE Complex in_order(Complex x, LaneOrder order) {
    return {in_order(x.re, order), in_order(x.im, order)};
}

/// The input of the transforms of all residues, in the order of their rows.
template <class T>
struct RowInput {
    using Value = T;

    const Elements<T>& elements;
    LaneOrder order;

    SORVO_INLINE Value operator()(std::size_t i) const { return in_order(elements.run(i), order); }
};

}  // namespace
}  // namespace sorvo::audio
