// How many frames are worked on at a time, and how their values lie in memory.
#pragma once

#include <cstddef>

#include "util/round_up.h"

namespace sorvo::audio {

/// Frames of a block: enough to read or write whole cache lines of a frequency-major spectrogram,
/// fewer where frames are long, so that a block stays in the second-level cache.
constexpr std::size_t block_frames(std::size_t fft_n) {
    return fft_n <= 1024 ? 64 : fft_n <= 2048 ? 48 : 16;
}

/// Floats from row to row where rows hold n: an odd number of cache lines, so that the values of a
/// column spread over the whole first-level cache.
constexpr std::size_t odd_lines(std::size_t n) {
    constexpr std::size_t line = 16;
    return (round_up(n, line) / line | 1) * line;
}

/// Bins of so many frames, brought from one layout to another. What follows the last may be
/// prefetched but is not touched.
struct BinMove {
    float* dst;
    std::size_t dst_step;  ///< floats from bin to bin
    const float* src;
    std::size_t src_step;  ///< floats from row to row, of which a bin may have two
    std::size_t bin_n;
    std::size_t frame_n;
};

}  // namespace sorvo::audio
