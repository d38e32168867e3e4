#include "resample/resample_kernels.h"

namespace sorvo::audio {

const ResampleKernels& resample_kernels(CpuLevel level) {
    switch (level) {
        case CpuLevel::avx512:
            return resample_kernels_avx512;
        case CpuLevel::avx2:
            return resample_kernels_avx2;
        case CpuLevel::baseline:
            break;
    }
    return resample_kernels_baseline;
}

}  // namespace sorvo::audio
