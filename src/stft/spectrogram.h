#pragma once

#include "simd/level.h"
#include "stft/analysis.h"

namespace sorvo::audio {

/// Spectrogram of a signal, dst[(k * max_frame_n + t) * 2 ...]: complex values, or with a power
/// above 0 |X|^power and 0. Frames that the signal does not yield are not written.
void spectrogram(float* dst, const Signal& signal, const Analysis& analysis, int max_frame_n,
                 SimdLevel level = simd_level());

/// The same, one frame after the other: the definition.
void spectrogram_plain(float* dst, const Signal& signal, const Analysis& analysis, int max_frame_n);

}  // namespace sorvo::audio
