#include "stft/frame_kernels.h"
#include "stft/frame_kernels.inl"

namespace sorvo::audio {

const FrameKernels frame_kernels_baseline = make_frame_kernels(CpuLevel::baseline);

}  // namespace sorvo::audio
