#include "fft/single_kernels.h"

namespace sorvo::audio {

const SingleKernels& single_kernels(CpuLevel level) {
    switch (level) {
        case CpuLevel::avx512:
            return single_kernels_avx512;
        case CpuLevel::avx2:
            return single_kernels_avx2;
        case CpuLevel::baseline:
            break;
    }
    return single_kernels_baseline;
}

}  // namespace sorvo::audio
