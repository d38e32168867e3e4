// Asking for rows ahead of time.
#pragma once

#include "simd/inline.h"

#include <cstddef>

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// Rows are far apart, so that no hardware prefetcher foresees the next: asks for one further on.
template <bool to_write>
SORVO_INLINE void prefetch_row(const float* row, std::size_t row_step, std::size_t n) {
    constexpr std::size_t ahead = 12;
    constexpr std::size_t line = 16;
    for (std::size_t i = 0; i < n + line; i += line) {
        __builtin_prefetch(row + ahead * row_step + i, to_write ? 1 : 0);
    }
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
