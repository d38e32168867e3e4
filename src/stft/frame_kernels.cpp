#include "stft/frame_kernels.h"

namespace sorvo::audio {

const FrameKernels& frame_kernels(CpuLevel level) {
    return for_level(level, frame_kernels_baseline, frame_kernels_avx2, frame_kernels_avx512);
}

}  // namespace sorvo::audio
