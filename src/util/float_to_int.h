#pragma once

#include <limits>
#include <stdexcept>

namespace sorvo::audio {

/// Truncates towards zero. What does not fit (NaN and infinities included) is the smallest int,
/// which is what the conversion instruction of x86-64 yields and what C++ leaves undefined.
inline int truncate_to_int(float value) {
    constexpr float limit = 2147483648.0F;
    return value >= -limit && value < limit ? static_cast<int>(value)
                                            : std::numeric_limits<int>::min();
}

/// A length as an int; one that does not fit is an error, never a wrapped number.
template <class Number>
int length_to_int(Number length) {
    if (!(length <= static_cast<Number>(std::numeric_limits<int>::max())) ||
        !(length >= static_cast<Number>(std::numeric_limits<int>::min()))) {
        throw std::overflow_error("length does not fit an int");
    }
    return static_cast<int>(length);
}

}  // namespace sorvo::audio
