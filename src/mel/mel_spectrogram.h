#pragma once

#include "mel/mfb_table.h"
#include "stft/frame_spectra.h"

namespace sorvo::audio {

/// Mel spectrogram of a signal, dst[m * frame_n + t], with frame_n the number of frames computed:
/// the smaller of max_frame_n and what the signal yields.
void mel_spectrogram(float* dst, const float* src, int sample_n, int sample_rate, int fft_n,
                     int hop_n, int win_n, int win_type, int max_frame_n, int center, float power,
                     int fft_norm_type, float f_min, float f_max, int mel_n, int mel_norm,
                     int mel_formula);

/// The same, many frames side by side by these kernels, or one at a time where there are none. The
/// results do not depend on it.
void mel_spectrogram(float* dst, const FrameSource& source, int win_n, int win_type, float power,
                     int fft_norm_type, const MelFilterBankParam& mel, const FrameKernels* kernels);

}  // namespace sorvo::audio
