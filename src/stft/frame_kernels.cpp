#include "stft/frame_kernels.h"

namespace sorvo::audio {

const FrameKernels& frame_kernels(CpuLevel level) {
    switch (level) {
        case CpuLevel::avx512:
            return frame_kernels_avx512;
        case CpuLevel::avx2:
            return frame_kernels_avx2;
        case CpuLevel::baseline:
            break;
    }
    return frame_kernels_baseline;
}

}  // namespace sorvo::audio
