// Cepstral coefficients of mel bands.
#pragma once

#include <string>
#include <vector>

namespace sorvo_tool {

// The orthonormal cosine transform (type 2) of every column: [band_n][frame_n] ->
// [coefficient_n][frame_n], coefficient_n at most band_n. The Python package does the same and
// gives the same bits. `file` is named in failures.
std::vector<float> cepstra(std::vector<float> levels, int band_n, int coefficient_n,
                           const std::string& file);

}  // namespace sorvo_tool
