#include "fft/single_kernels.h"

namespace sorvo::audio {

const SingleKernels& single_kernels(CpuLevel level) {
    return for_level(level, single_kernels_baseline, single_kernels_avx2, single_kernels_avx512);
}

}  // namespace sorvo::audio
