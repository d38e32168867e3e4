#include "elementwise/root_kernels.h"

namespace sorvo::audio {

RootKernel root_kernel(CpuLevel level) {
    return for_level(level, root_kernel_baseline, root_kernel_avx2, root_kernel_avx512);
}

}  // namespace sorvo::audio
