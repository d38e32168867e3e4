#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/inline.h"

namespace sorvo::audio::SORVO_LEVEL {

constexpr std::size_t cache_line_n = 64;  ///< bytes

/// Asks for the cache line of an address; whether anything is there does not matter. In a function
/// that is not inlined, g++ takes this for no effect and drops the call.
SORVO_INLINE void prefetch(std::uintptr_t address) {
    __builtin_prefetch(reinterpret_cast<const void*>(address));
}

}  // namespace sorvo::audio::SORVO_LEVEL
