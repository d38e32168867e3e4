#include "elementwise/root_kernels.h"
#include "elementwise/root_kernels.inl"

namespace sorvo::audio {

const RootKernel root_kernel_avx512 = take_roots;

}  // namespace sorvo::audio
