#include "util/edge_extension.h"

#include <algorithm>
#include <cstddef>

namespace sorvo::audio {
namespace {

/// Index of the reflected signal: folded back at both ends until it lies inside.
std::int64_t reflected(std::int64_t k, std::int64_t n) {
    if (n == 1) {
        return 0;
    }
    const std::int64_t period = 2 * (n - 1);
    std::int64_t r = k % period;
    r = r < 0 ? r + period : r;
    return r < n ? r : period - r;
}

/// The extended signal at an index k outside 0 ... n - 1.
float outside(const float* src, std::int64_t n, std::int64_t k, Extension extension) {
    const float edge = k < 0 ? src[0] : src[n - 1];
    switch (extension) {
        case Extension::reflect:
            return src[reflected(k, n)];
        case Extension::odd:
            return (edge + edge) - src[reflected(k, n)];
        case Extension::constant:
            return edge;
        case Extension::zeros:
            break;
    }
    return 0.0F;
}

void extract_padded(std::vector<float>& dst, const float* src, int sample_n, int start, int pad_len,
                    Extension extension) {
    extract_segment(dst, src, sample_n, static_cast<std::int64_t>(start) - pad_len, extension);
}

}  // namespace

void extract_segment(std::vector<float>& dst, const float* src, int sample_n, std::int64_t first,
                     Extension extension) {
    const std::int64_t n = sample_n;
    const auto length = static_cast<std::int64_t>(dst.size());
    const std::int64_t inside_begin = std::clamp<std::int64_t>(-first, 0, length);
    const std::int64_t inside_end = std::clamp<std::int64_t>(n - first, inside_begin, length);
    float* const out = dst.data();
    for (std::int64_t j = 0; j < inside_begin; ++j) {
        out[j] = outside(src, n, first + j, extension);
    }
    if (inside_begin < inside_end) {
        std::copy(src + first + inside_begin, src + first + inside_end, out + inside_begin);
    }
    for (std::int64_t j = inside_end; j < length; ++j) {
        out[j] = outside(src, n, first + j, extension);
    }
}

void extract_segment_sample_center_reflect(std::vector<float>& dst, const float* src, int sample_n,
                                           int start, int pad_len) {
    extract_padded(dst, src, sample_n, start, pad_len, Extension::reflect);
}

void extract_segment_sample_center_odd(std::vector<float>& dst, const float* src, int sample_n,
                                       int start, int pad_len) {
    extract_padded(dst, src, sample_n, start, pad_len, Extension::odd);
}

void extract_segment_sample_center_constant(std::vector<float>& dst, const float* src, int sample_n,
                                            int start, int pad_len) {
    extract_padded(dst, src, sample_n, start, pad_len, Extension::constant);
}

void extract_segment_sample_center_zeros_padded(std::vector<float>& dst, const float* src,
                                                int sample_n, int start, int pad_len) {
    extract_padded(dst, src, sample_n, start, pad_len, Extension::zeros);
}

}  // namespace sorvo::audio
