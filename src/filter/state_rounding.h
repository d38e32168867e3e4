#pragma once

#include <cstddef>
#include <type_traits>

#include "util/vectors.h"

namespace sorvo::audio {

/// What storing in a State and reading again makes of v.
template <std::size_t width, class State>
[[gnu::always_inline]] inline void round_to_state(typename Vectors<width>::Doubles& v) {
    if constexpr (std::is_same_v<State, float>) {
        typename Vectors<width>::Floats rounded;
        narrow<width>(rounded, v);
        widen<width>(v, rounded);
    }
}

}  // namespace sorvo::audio
