// Arrays, a vector at a time.
#pragma once

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {

/// Calls f(dst, src) for lane_n elements at a time; the last ones, if they are fewer, are computed
/// among others. An element is `src_n` floats and becomes `dst_n`.
template <std::size_t dst_n, std::size_t src_n, class Function>
SORVO_INLINE void for_each_vector(float* dst, const float* src, std::size_t n, Function f) {
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        f(dst + dst_n * i, src + src_n * i);
    }
    if (i < n) {
        float last_src[src_n * lane_n];
        float last_dst[dst_n * lane_n];
        for (std::size_t j = 0; j < src_n * lane_n; ++j) {
            last_src[j] = j < src_n * (n - i) ? src[src_n * i + j] : 1.0F;
        }
        f(last_dst, last_src);
        for (std::size_t j = 0; j < dst_n * (n - i); ++j) {
            dst[dst_n * i + j] = last_dst[j];
        }
    }
}

}  // namespace sorvo::audio::SORVO_LEVEL
