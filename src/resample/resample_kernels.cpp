#include "resample/resample_kernels.h"

namespace sorvo::audio {

const ResampleKernels& resample_kernels(CpuLevel level) {
    return for_level(level, resample_kernels_baseline, resample_kernels_avx2,
                     resample_kernels_avx512);
}

}  // namespace sorvo::audio
