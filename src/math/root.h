// powf(x, 0.5f) of a pack.
//
// powf(x, 0.5f) is the correctly rounded root save where the root lies within 0.0016 units in the
// last place of the midpoint of two floats. Near a midpoint the remainder x - s s of the rounded
// root s is close to s ulp(s), its bound. So s is right where the remainder is clearly below that,
// however s came about; everywhere else powf is asked.
#pragma once

#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// A root, and one bit for each lane in which it may be wrong: there the value is not the root but
/// x with a sign. What is so small that the remainder could underflow, and what is not a finite
/// positive number, is in doubt; +0 is not.
struct Root {
    FloatVec value;
    unsigned doubt;
};

/// The part of the bound within which the root is right: the less, the less exact the remainder is.
constexpr float certain = has_fused_multiply ? 0.9967F : 0.996F;

constexpr float underflow = 1e-37F;  // taken off the bound, leaves nothing where x is below 1e-30

/// x - s s, exact but for one rounding.
SORVO_INLINE FloatVec remainder_of(FloatVec x, FloatVec s) {
    if constexpr (has_fused_multiply) {
        return minus_product(x, s, s);
    } else {
        // `high` is half of the bits of s: its square is exact, and so is the first difference.
        const FloatVec high = from_bits(bits_of(s) & 0xFFFFF000U);
        const FloatVec low = s - high;
        return ((x - high * high) - 2.0F * high * low) - low * low;
    }
}

SORVO_INLINE Root find_root(FloatVec x) {
    const FloatVec s = square_root(x);
    const FloatVec binade = from_bits(bits_of(s) & 0x7F800000U);
    const FloatVec bound = s * (binade * (certain * 0x1p-23F)) - underflow;
    Root root = {s, 0};
    root.doubt = replace_unless_below(root.value, from_bits(bits_of(x) | 0x80000000U),
                                      magnitude_of(remainder_of(x, s)), bound, x);
    return root;
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
