#include "elementwise/frame_length.h"

#include <algorithm>
#include <cstddef>

namespace sorvo::audio {

void fix_frame_len(float* dst, const float* src, int freq_n, int dst_frame_n, int src_frame_n,
                   float pad_value) {
    const std::ptrdiff_t copied_n = std::min(dst_frame_n, src_frame_n);
    for (std::ptrdiff_t row = 0; row < freq_n; ++row) {
        float* const to = dst + row * dst_frame_n;
        std::copy_n(src + row * src_frame_n, copied_n, to);
        std::fill(to + copied_n, to + dst_frame_n, pad_value);
    }
}

}  // namespace sorvo::audio
