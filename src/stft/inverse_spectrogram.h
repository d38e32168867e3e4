// From a complex spectrogram, [freq_n][frame_n][2], back to a signal.
#pragma once

#include <vector>

#include "simd/level.h"
#include "stft/analysis.h"

namespace sorvo::audio {

/// Length of the reconstructed signal: (frame_n - 1) hop_n, and 2 freq_n - 2 more without centring;
/// 0 without frames. Throws std::overflow_error where it does not fit an int.
int get_sample_len(int frame_n, int freq_n, int hop_n, bool center);

/// dst = the complex samples of src weighted as apply_window (stft_core.h) weights real ones.
void apply_window_comp(std::vector<float>& dst, const std::vector<float>& src,
                       const std::vector<float>& window);

/// Undoes normalisation 2: by 0.5 fft_n. Normalisation 1 is not undone.
void scale_istft_scipy(std::vector<float>& data, int fft_n);
void scale_istft_torch(std::vector<float>& data, const std::vector<float>& window);

/// One frame: `spec` (2 fft_n floats) is inverse-transformed in place, windowed into `out`, scaled.
void istft_core(std::vector<float>& out, std::vector<float>& spec, int fft_n,
                const std::vector<float>& inv_table, const std::vector<float>& window,
                int norm_type);

/// Divides the real parts of the overlap-added signal `y` by the overlap-added squared window,
/// where that is greater than 1e-10; the imaginary parts stay. The fifth parameter is ignored.
/// ("suqare" is part of the name.)
void scale_istft_window_suqare_sum(std::vector<float>& y, const std::vector<float>& window,
                                   int fft_n, int hop_n, int, int frame_n);

/// Overlap-add synthesis of at most max_sample_n samples. Where max_sample_n asks for more than the
/// accumulated frames hold behind the centre offset, the rest of that range is 0.
void inverse_spectrogram(float* dst, int max_sample_n, const Synthesis& synthesis,
                         SimdLevel level = simd_level());

/// The same, one frame after the other: the definition.
void inverse_spectrogram_plain(float* dst, int max_sample_n, const Synthesis& synthesis);

}  // namespace sorvo::audio
