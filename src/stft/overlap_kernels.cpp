#include "stft/overlap_kernels.h"

namespace sorvo::audio {

const OverlapKernels& overlap_kernels(CpuLevel level) {
    return for_level(level, overlap_kernels_baseline, overlap_kernels_avx2, overlap_kernels_avx512);
}

}  // namespace sorvo::audio
