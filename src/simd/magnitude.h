// Looking for what is too large, or not finite.
#pragma once

#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {

template <class V>
SORVO_INLINE V larger(V a, V b) {
    return a > b ? a : b;
}

/// Of integers.
template <class V>
SORVO_INLINE std::int32_t largest_lane(V x) {
    if constexpr (lanes_of<V> == 4) {
        const auto in_pairs = larger(x, shuffle<From<2>>(x, x));
        return in_pairs[0] > in_pairs[1] ? in_pairs[0] : in_pairs[1];
    } else {
        const auto half = std::make_index_sequence<lanes_of<V> / 2>();
        return largest_lane(
            larger(shuffle<From<0>>(x, x, half), shuffle<From<lanes_of<V> / 2>>(x, x, half)));
    }
}

/// The largest magnitude seen, as the bit pattern of a float: NaN is above infinity.
class LargestMagnitude {
  public:
    SORVO_INLINE void see(FloatVec value) {
        const auto bits = reinterpret_cast<MaskVec>(bits_of(value) & 0x7FFFFFFFU);
        largest_ = larger(bits, largest_);
    }

    SORVO_INLINE void see(float value) {
        std::uint32_t bits = 0;
        __builtin_memcpy(&bits, &value, sizeof bits);
        bits &= 0x7FFFFFFFU;
        rest_ = bits > rest_ ? bits : rest_;
    }

    SORVO_INLINE std::uint32_t bits() const {
        const auto lanes = static_cast<std::uint32_t>(largest_lane(largest_));
        return lanes > rest_ ? lanes : rest_;
    }

  private:
    MaskVec largest_ = {};
    std::uint32_t rest_ = 0;
};

/// Whether a zero was seen.
class ZeroSeen {
  public:
    SORVO_INLINE void see(FloatVec value) {
        const auto bits = reinterpret_cast<MaskVec>(bits_of(value) & 0x7FFFFFFFU);
        smallest_ = bits < smallest_ ? bits : smallest_;
    }

    SORVO_INLINE void see(float value) { rest_ = rest_ || value == 0.0F; }

    SORVO_INLINE bool seen() const { return rest_ || lane_bits(smallest_ == 0) != 0; }

  private:
    MaskVec smallest_ = MaskVec{} + 1;
    bool rest_ = false;
};

}  // namespace sorvo::audio::SORVO_LEVEL
