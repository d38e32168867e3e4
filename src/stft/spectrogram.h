#pragma once

#include "stft/frame_spectra.h"

namespace sorvo::audio {

/// Short-time Fourier transform of a signal. dst is [freq_n = fft_n / 2 + 1][max_frame_n][2];
/// frames beyond those computed are left untouched. With power > 0 an element is (|X|^power, 0),
/// else X.
void spectrogram(float* dst, const float* src, int sample_n, int fft_n, int hop_n, int win_n,
                 int win_type, int max_frame_n, int center, float power, int norm_type);

/// The same, many frames side by side by these kernels, or one at a time where there are none. The
/// results do not depend on it.
void spectrogram(float* dst, const FrameSource& source, int win_n, int win_type, int max_frame_n,
                 float power, int norm_type, const FrameKernels* kernels);

}  // namespace sorvo::audio
