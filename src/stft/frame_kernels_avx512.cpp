#include "stft/frame_kernels.h"
#include "stft/frame_kernels.inl"

namespace sorvo::audio {

const FrameKernels frame_kernels_avx512 = make_frame_kernels(CpuLevel::avx512);

}  // namespace sorvo::audio
