#pragma once

#include <cstddef>

#include "simd/dispatch.h"

namespace sorvo::audio {

struct RootKernels {
    /// dst[i] = powf(src[i], 0.5f) for n floats; `dst` may be `src`.
    void (*take_roots)(float* dst, const float* src, std::size_t n);
};

SORVO_DECLARE_KERNELS(RootKernels, root_kernels)

}  // namespace sorvo::audio
