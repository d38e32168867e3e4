// Cepstral coefficients of mel bands.
#pragma once

#include <string>
#include <vector>

namespace sorvo_tool {

// The orthonormal cosine transform (type 2) of columns. The Python package does the same and gives
// the same bits. `file` is named in failures.
class CosineTransform {
  public:
    // coefficient_n is at most band_n.
    CosineTransform(int band_n, int coefficient_n, std::string file);

    // [band_n][frame_n] -> [coefficient_n][frame_n]
    std::vector<float> operator()(std::vector<float> levels) const;

  private:
    int band_n_;
    int coefficient_n_;
    std::string file_;
    std::vector<float> basis_;  // [coefficient_n][band_n + 1]
};

}  // namespace sorvo_tool
