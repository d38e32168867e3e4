#pragma once

namespace sorvo::audio {

/// Short-time Fourier transform of a signal. dst is [freq_n = fft_n / 2 + 1][max_frame_n][2];
/// frames beyond those computed are left untouched. With power > 0 an element is (|X|^power, 0),
/// else X.
void spectrogram(float* dst, const float* src, int sample_n, int fft_n, int hop_n, int win_n,
                 int win_type, int max_frame_n, int center, float power, int norm_type);

}  // namespace sorvo::audio
