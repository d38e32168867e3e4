#pragma once

#include <cstddef>

#include "util/cpu.h"

namespace sorvo::audio {

/// dst[i] = powf(src[i], 0.5f) for n floats; `dst` may be `src`.
using RootKernel = void (*)(float* dst, const float* src, std::size_t n);

RootKernel root_kernel(CpuLevel level);

extern const RootKernel root_kernel_baseline;
extern const RootKernel root_kernel_avx2;
extern const RootKernel root_kernel_avx512;

}  // namespace sorvo::audio
