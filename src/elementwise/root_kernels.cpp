#include "elementwise/root_kernels.h"

namespace sorvo::audio {

RootKernel root_kernel(CpuLevel level) {
    switch (level) {
        case CpuLevel::avx512:
            return root_kernel_avx512;
        case CpuLevel::avx2:
            return root_kernel_avx2;
        case CpuLevel::baseline:
            break;
    }
    return root_kernel_baseline;
}

}  // namespace sorvo::audio
