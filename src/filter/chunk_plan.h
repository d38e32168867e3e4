// How the samples of a speculative round are divided among the lanes.
#pragma once

#include <algorithm>
#include <cstddef>

#include "filter/chunk_kernels.h"

namespace sorvo::audio {

/// Each lane runs `warm_up_n` samples and then a chunk of `chunk_n`. Lane 0 begins with the true
/// state, so that its warm-up counts, and a round has the length of all chunks and one warm-up.
/// Both are multiples of chunk_row_unit.
///
///     lane 0   |warm-up|  chunk 0  |
///     lane 1               |warm-up|  chunk 1  |
///     lane 2                           |warm-up|  chunk 2  |
///     round    |<----------------------------------------->|
struct ChunkPlan {
    std::size_t warm_up_n;
    std::size_t chunk_n;

    std::size_t size() const { return warm_up_n + chunk_lane_n * chunk_n; }
};

/// Samples of one chunk: few enough for the cache.
constexpr std::size_t max_chunk_n = 4096;
/// Samples of a warm-up, however fast the filter forgets.
constexpr std::size_t min_warm_up_n = 32;

constexpr std::size_t round_down_to_rows(std::size_t n) {
    return n / chunk_row_unit * chunk_row_unit;
}

/// What divides n samples into equal rounds, or into one if they are few; no chunks where they are
/// too few.
inline ChunkPlan plan_chunks(std::size_t n, std::size_t warm_up_n) {
    const std::size_t round_n = n / ChunkPlan{warm_up_n, max_chunk_n}.size() + 1;
    const std::size_t size = std::max(n / round_n, warm_up_n);
    const std::size_t chunk_n = round_down_to_rows((size - warm_up_n) / chunk_lane_n);
    return {warm_up_n, chunk_n < warm_up_n ? 0 : chunk_n};
}

}  // namespace sorvo::audio
