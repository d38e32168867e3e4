// How many frames are worked on at a time, and how their values lie in memory.
#pragma once

#include <cstddef>

namespace sorvo::audio {

/// Frames of a block: enough to read or write whole cache lines of a frequency-major spectrogram,
/// fewer where frames are long, so that a block stays in the second-level cache.
constexpr std::size_t block_frames(int fft_n) {
    return fft_n <= 1024 ? 64 : fft_n <= 2048 ? 48 : 16;
}

/// Floats of a row that holds n: an odd number of cache lines, so that the rows of a column spread
/// over the whole first-level cache.
constexpr std::size_t odd_lines(std::size_t n) {
    constexpr std::size_t line = 16;
    return ((n + line - 1) / line | 1) * line;
}

/// Rows of n values, brought from one layout to another. What follows the last row may be
/// prefetched but is not touched.
struct RowMove {
    float* dst;
    std::size_t dst_row;
    const float* src;
    std::size_t src_row;
    std::size_t row_n;
    std::size_t n;
};

}  // namespace sorvo::audio
