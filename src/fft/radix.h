// The radices that transforms of lengths other than powers of two know. This is their only list.
#pragma once

#include <cstddef>

#include "simd/inline.h"

namespace sorvo::audio {

/// Two stages of factor 2 in a row are computed as one: read and written once, with the arithmetic
/// of both. 4 is never a factor by itself.
constexpr std::size_t fused_twos = 4;

/// Stands for a factor without code of its own.
constexpr std::size_t any_factor = 0;

/// A factor as a type.
template <std::size_t n>
struct Radix {
    static constexpr std::size_t factor = n;
};

/// Calls body(Radix) for a prime other than 2.
template <class Body>
SORVO_INLINE void with_odd_radix(std::size_t factor, Body body) {
    switch (factor) {
        case 3:
            return body(Radix<3>());
        case 5:
            return body(Radix<5>());
        case 7:
            return body(Radix<7>());
        default:
            return body(Radix<any_factor>());
    }
}

/// Calls body(Radix) for the factor of a stage.
template <class Body>
SORVO_INLINE void with_radix(std::size_t factor, Body body) {
    switch (factor) {
        case 2:
            return body(Radix<2>());
        case fused_twos:
            return body(Radix<fused_twos>());
        default:
            return with_odd_radix(factor, body);
    }
}

/// False for factors without code of their own.
inline bool is_known_radix(std::size_t factor) {
    bool known = false;
    with_radix(factor, [&](auto radix) { known = decltype(radix)::factor != any_factor; });
    return known;
}

}  // namespace sorvo::audio
