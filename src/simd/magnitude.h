// Looking for what is too large, or not finite.
#pragma once

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {

/// The largest magnitude seen, as the bit pattern of a float: NaN is above infinity.
class LargestMagnitude {
  public:
    SORVO_INLINE void see(FloatVec value) {
        const auto bits = reinterpret_cast<MaskVec>(bits_of(value) & 0x7FFFFFFFU);
        largest_ = bits > largest_ ? bits : largest_;
    }

    SORVO_INLINE void see(float value) {
        std::uint32_t bits = 0;
        __builtin_memcpy(&bits, &value, sizeof bits);
        bits &= 0x7FFFFFFFU;
        rest_ = bits > rest_ ? bits : rest_;
    }

    SORVO_INLINE std::uint32_t bits() const {
        std::uint32_t result = rest_;
        for (std::size_t i = 0; i < lane_n; ++i) {
            const auto lane = static_cast<std::uint32_t>(largest_[i]);
            result = lane > result ? lane : result;
        }
        return result;
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
