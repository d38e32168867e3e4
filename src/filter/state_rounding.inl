#pragma once

#include "util/double_lanes.inl"

namespace sorvo::audio {
namespace {

/// What storing in a State and reading again makes of a value.
template <class State>
SORVO_INLINE DoublePack rounded_to(DoublePack value) {
    if constexpr (sizeof(State) == sizeof(float)) {
        return widen(narrow(value));
    } else {
        return value;
    }
}

}  // namespace
}  // namespace sorvo::audio
