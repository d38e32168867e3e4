// What the elementary functions in lanes share.
//
// They come in two forms. The rounded form gives the float nearest to the true value: it computes
// in double, and where the double is so near the middle of two floats that its error could decide,
// the element is computed again with more digits (math/exact.h). How it is computed does not show
// in the result. The classic form takes, operation by operation, the steps that glibc took before
// version 2.41, whose results are up to one unit in the last place off, and so gives those results.
// Its constants are those of glibc; each file names their origin.
#pragma once

#include "math/series.h"
#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

SORVO_INLINE IntVec ints_of(FloatVec x) {
    return reinterpret_cast<IntVec>(x);
}

SORVO_INLINE FloatVec floats_of(IntVec bits) {
    return reinterpret_cast<FloatVec>(bits);
}

/// x, or 0 where the mask is not set.
SORVO_INLINE FloatVec where(MaskVec mask, FloatVec x) {
    return floats_of(mask & ints_of(x));
}

SORVO_INLINE FloatVec where(MaskVec mask, float x) {
    return where(mask, broadcast(x));
}

/// The magnitude of x with the sign of y.
SORVO_INLINE FloatVec with_sign_of(FloatVec y, FloatVec x) {
    return from_bits(bits_of(magnitude_of(x)) | (bits_of(y) & 0x80000000U));
}

/// The result, with f(lane) in the lanes of the mask.
template <class Function>
SORVO_INLINE FloatVec replaced(FloatVec result, MaskVec mask, Function f) {
    for (unsigned lanes = lane_bits(mask); lanes != 0; lanes &= lanes - 1) {
        const int lane = __builtin_ctz(lanes);
        result[lane] = f(lane);
    }
    return result;
}

SORVO_INLINE bool any(MaskVec mask) {
    return __builtin_expect(lane_bits(mask) != 0, 0) != 0;
}

/// x = 2^exponent m with m between sqrt(1/2) and sqrt(2), for positive normal x.
struct Split {
    IntVec exponent;
    FloatVec m;
};

SORVO_INLINE Split split(FloatVec x) {
    constexpr std::uint32_t root_of_half = 0x3F3504F3;
    const BitsVec above = bits_of(x) - root_of_half;
    return {reinterpret_cast<IntVec>(above) >> 23, from_bits((above & 0x7FFFFF) + root_of_half)};
}

/// 2^exponent, for exponents from -126 to 127.
SORVO_INLINE FloatVec power_of_two(IntVec exponent) {
    return from_bits(reinterpret_cast<BitsVec>(exponent + 127) << 23);
}

// The rounded forms, in double.

/// numerator / denominator to 45 bits, of a reciprocal that is right to 22 bits.
SORVO_INLINE DoubleVec quotient(DoubleVec numerator, DoubleVec denominator, DoubleVec reciprocal) {
    const DoubleVec q = numerator * reciprocal;
    const DoubleVec error = plus_product_somehow(broadcast_double(1.0), -denominator, reciprocal);
    return plus_product_somehow(q, q, error);
}

/// The sum of c[i] x^i.
template <std::size_t n>
SORVO_INLINE DoubleVec polynomial(DoubleVec x, const double (&c)[n]) {
    DoubleVec sum = broadcast_double(c[n - 1]);
    for (std::size_t i = n - 1; i-- > 0;) {
        sum = plus_product_somehow(broadcast_double(c[i]), sum, x);
    }
    return sum;
}

/// Set where x, off by up to `margin` units in its last place, may round to another float than the
/// true value: where the 29 bits that rounding drops are near their middle. For results that are
/// zeros or normal floats.
template <std::int64_t margin>
SORVO_INLINE MaskVec near_middle(DoubleVec x) {
    // Shifted, the bits fill the lower words, their middle being the least signed number. Nothing
    // is less than the limits of the upper words.
    constexpr auto never = static_cast<std::int64_t>(0x8000000000000000U);
    const auto shift = reinterpret_cast<BitsVec>(LongMaskVec{} + 8 * margin);
    const auto limit =
        reinterpret_cast<IntVec>(LongMaskVec{} + (never | (0x80000000 + 16 * margin)));
    return reinterpret_cast<IntVec>((reinterpret_cast<BitsVec>(x) << 3) + shift) < limit;
}

template <std::int64_t margin>
SORVO_INLINE MaskVec any_near_middle(Wide x) {
    return near_middle<margin>(x.low) | near_middle<margin>(x.high);
}

/// The same for each lane of the narrowed vector, and for any result.
template <std::int64_t margin>
SORVO_INLINE MaskVec in_doubt(Wide x) {
    const auto moved = [](DoubleVec value, std::int64_t steps) SORVO_INLINE_BODY {
        return reinterpret_cast<DoubleVec>(reinterpret_cast<LongMaskVec>(value) + steps);
    };
    return narrow({moved(x.low, -margin), moved(x.high, -margin)}) !=
           narrow({moved(x.low, margin), moved(x.high, margin)});
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
