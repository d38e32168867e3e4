// What a signal has beyond its ends.
#pragma once

#include <cstdint>
#include <vector>

namespace sorvo::audio {

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
