// One analysis frame: window, transform, normalisation.
#pragma once

#include <vector>

namespace sorvo::audio {

/// Weights the frame by a window centred in it. What the window does not cover becomes 0; where
/// frame and window differ by an odd number, the sample after the window's last gets weight 0. A
/// window longer than the frame is cropped about its middle.
void apply_window(std::vector<float>& frame, const std::vector<float>& window);

/// Normalisation 1: by 1 / sqrt(sum of the squared window).
void scale_stft_torch(std::vector<float>& data, const std::vector<float>& window);
/// Normalisation 2: by 2 / fft_n.
void scale_stft_scipy(std::vector<float>& data, int fft_n);

/// Windows `frame` (fft_n floats) in place and leaves its normalised spectrum in `out` (2 fft_n
/// floats, interleaved). Any norm_type but 1 and 2 leaves the spectrum as it is.
void stft_core(std::vector<float>& out, std::vector<float>& frame, int fft_n,
               const std::vector<float>& fft_table, const std::vector<float>& window,
               int norm_type);

/// Where a window of window_n samples lies in a frame of frame_n: frame sample i has weight
/// window[i - offset] for begin <= i < end, weight 0 for end <= i < cleared, and is set to 0
/// outside begin ... cleared - 1.
struct WindowSpan {
    WindowSpan(std::ptrdiff_t frame_n, std::ptrdiff_t window_n);

    std::ptrdiff_t offset;
    std::ptrdiff_t begin;
    std::ptrdiff_t end;
    std::ptrdiff_t cleared;
};

}  // namespace sorvo::audio
