#include "stft/overlap_kernels.h"

namespace sorvo::audio {

const OverlapKernels& overlap_kernels(CpuLevel level) {
    switch (level) {
        case CpuLevel::avx512:
            return overlap_kernels_avx512;
        case CpuLevel::avx2:
            return overlap_kernels_avx2;
        case CpuLevel::baseline:
            break;
    }
    return overlap_kernels_baseline;
}

}  // namespace sorvo::audio
