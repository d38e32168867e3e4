#pragma once

#include <cstddef>

namespace sorvo::audio {

// The C library's functions, called for each of n elements: the plain twins of
// math/function_kernels.h.

void call_log10f(float* dst, const float* src, std::size_t n);
void call_log1pf(float* dst, const float* src, std::size_t n);

/// atan2f(im, re) of interleaved complex numbers.
void call_atan2f(float* dst, const float* src, std::size_t n);

/// The unit numbers of n angles, interleaved.
void call_cexpf(float* dst, const float* src, std::size_t n);

}  // namespace sorvo::audio
