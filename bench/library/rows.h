// A row of the comparison: one task, done by the library and by others on the same data.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "simd/level.h"

namespace sorvo::bench {

/// Another way to do the task; `run` writes the row's output.
struct Variant {
    std::string name;  ///< "family" or "family:detail"; "plain" is the library's own definition
    std::function<void(float* dst)> run;
};

struct Row {
    std::size_t output_n;
    /// Bound of the relative L2 difference between any output and the first; 0 where the variants
    /// do different things (the same task at other lengths) and nothing is compared.
    double tolerance;
    /// The library's routine, measured at every processor level as "ours:level". May be empty.
    std::function<void(float* dst, audio::SimdLevel level)> ours;
    std::vector<Variant> others;
};

/// Rows are made when they are run: planning takes time and their buffers memory.
struct RowMaker {
    std::string name;  ///< "group/task"
    std::function<Row()> make;
};
using Rows = std::vector<RowMaker>;

Rows fft_rows();
Rows spectrogram_rows();
Rows mel_rows();
Rows log_mel_rows();
Rows inverse_rows();
Rows resample_rows();
Rows filter_rows();
Rows elementwise_rows();
Rows growth_rows();

/// Powers in decibels by the definition, at most 80 dB below the maximum. `dst` may be `src`.
void decibels_plainly(float* dst, const float* src, int n);

}  // namespace sorvo::bench
