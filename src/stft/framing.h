// How a signal is cut into frames: how many there are, and what a frame or segment receives where
// it reaches past an end of the signal.
#pragma once

#include <cstdint>
#include <vector>

namespace sorvo::audio {

/// Number of frames, by the formulas of the three centre modes in float arithmetic; 0 for a signal
/// shorter than a frame. What does not fit an int (a hop of 0 included) is the smallest int.
int get_frame_len(int sample_n, int fft_n, int hop_n, int center);

/// What stands before and after a signal.
enum class Extension {
    zeros,     ///< 0
    reflect,   ///< the signal mirrored about its edge sample, which is not repeated
    odd,       ///< the reflection mirrored through the edge value: 2 edge - reflection
    constant,  ///< the edge sample
};

/// dst[j] = the extended signal at index first + j (index 0 is src[0]). A reflection that leaves
/// the signal at its other end is reflected again, so that every index has a value.
void extract_segment(std::vector<float>& dst, const float* src, int sample_n, std::int64_t first,
                     Extension extension);

/// Frame t of the signal in centre mode 0 (first sample t hop_n; samples past the end are 0),
/// 1 (centred at t hop_n, reflected ends) or 2 (centred, zero ends).
void extract_frame(std::vector<float>& frame, const float* src, int sample_n, std::int64_t t,
                   int hop_n, int center);

// The same in coordinates of the padded signal: position start + j of the signal that has pad_len
// extension samples in front. An empty dst leaves everything untouched.
void extract_segment_sample_center_reflect(std::vector<float>& dst, const float* src, int sample_n,
                                           int start, int pad_len);
void extract_segment_sample_center_odd(std::vector<float>& dst, const float* src, int sample_n,
                                       int start, int pad_len);
void extract_segment_sample_center_constant(std::vector<float>& dst, const float* src, int sample_n,
                                            int start, int pad_len);
void extract_segment_sample_center_zeros_padded(std::vector<float>& dst, const float* src,
                                                int sample_n, int start, int pad_len);

}  // namespace sorvo::audio
