// How a signal is cut into frames: how many there are, and what a frame receives where it reaches
// past an end of the signal.
#pragma once

#include <cstdint>
#include <vector>

namespace sorvo::audio {

/// Number of frames, by the formulas of the three centre modes in float arithmetic; 0 for a signal
/// shorter than a frame. What does not fit an int (a hop of 0 included) is the smallest int.
int get_frame_len(int sample_n, int fft_n, int hop_n, int center);

/// Frame t of the signal in centre mode 0 (first sample t hop_n; samples past the end are 0),
/// 1 (centred at t hop_n, reflected ends) or 2 (centred, zero ends).
void extract_frame(std::vector<float>& frame, const float* src, int sample_n, std::int64_t t,
                   int hop_n, int center);

}  // namespace sorvo::audio
