#pragma once

#include <vector>

namespace sorvo::audio {

/// Triangular mel filters. `rows` holds mel_n rows of freq_n zeros and receives the weights; bin j
/// stands for j (sample_rate / 2) / (freq_n - 1) Hz. Any mel_norm but 0 scales each row by 2 / (its
/// width in Hz).
void create_fb_matrix(std::vector<std::vector<float>>& rows, int freq_n, float f_min, float f_max,
                      int mel_n, int sample_rate, int mel_norm, bool htk);

}  // namespace sorvo::audio
