#pragma once

namespace sorvo::audio {

/// Copies freq_n rows of src_frame_n floats into rows of dst_frame_n floats, cutting each row at
/// its end or filling it up with pad_value.
void fix_frame_len(float* dst, const float* src, int freq_n, int dst_frame_n, int src_frame_n,
                   float pad_value);

}  // namespace sorvo::audio
