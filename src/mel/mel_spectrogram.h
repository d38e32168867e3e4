#pragma once

#include "mel/mfb_table.h"
#include "simd/level.h"
#include "stft/analysis.h"

namespace sorvo::audio {

/// Mel spectrogram of a signal, dst[m * frame_n + t], with frame_n the number of frames computed:
/// the smaller of max_frame_n and what the signal yields. The bank has freq_n = fft_n / 2 + 1.
void mel_spectrogram(float* dst, const Signal& signal, const Analysis& analysis,
                     const MelFilterBankParam& mel, int max_frame_n,
                     SimdLevel level = simd_level());

/// The same, one frame after the other: the definition.
void mel_spectrogram_plain(float* dst, const Signal& signal, const Analysis& analysis,
                           const MelFilterBankParam& mel, int max_frame_n);

}  // namespace sorvo::audio
