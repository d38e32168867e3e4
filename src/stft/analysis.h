// How a signal is turned into spectra, and back.
#pragma once

#include <algorithm>

#include "stft/framing.h"

namespace sorvo::audio {

struct Signal {
    const float* samples;
    int n;
};

/// The parameters of a short-time transform, as the public functions take them.
struct Analysis {
    int fft_n;
    int hop_n;
    int win_n;
    int win_type;
    int center;
    float power;
    int norm_type;
};

/// A complex spectrogram, [freq_n][frame_n][2], and how it is turned back into a signal.
struct Synthesis {
    const float* src;
    int frame_n;
    int freq_n;
    int hop_n;
    int win_n;
    int win_type;
    int center;
    int norm_type;
};

/// Frames that are computed: those of the signal, but no more than are wanted.
inline int frame_count(const Signal& signal, const Analysis& analysis, int max_frame_n) {
    return std::min(get_frame_len(signal.n, analysis.fft_n, analysis.hop_n, analysis.center),
                    max_frame_n);
}

}  // namespace sorvo::audio
