// Logarithms of mel bands, as models take them. Each is one sequence of float operations and calls
// of the library, which the Python package repeats, so that both give the same bits.
#pragma once

#include <string>
#include <vector>

namespace sorvo_tool {

enum class Compression {
    none,
    log,     // log(max(x, 1e-5))
    whisper  // (max(log10(max(x, 1e-10)), the largest - 8) + 4) / 4
};

// From the word of the table of presets; empty: none.
Compression compression_of(const std::string& word);

std::string word_of(Compression compression);

// The larger of `so_far` and the largest of the values; NaN if one is NaN.
float largest_of(const std::vector<float>& values, float so_far = 0);

// `largest` is that of the whole array, of which `bands` may be a part; `file` is named in
// failures.
void compress(std::vector<float>& bands, Compression compression, float largest,
              const std::string& file);

// 10 log10(max(x, 1e-10)), not lower than 80 below that of the largest; NaN if that is NaN.
void to_levels(std::vector<float>& powers, float largest, const std::string& file);

}  // namespace sorvo_tool
