#include "stft/overlap_kernels.h"
#include "stft/overlap_kernels.inl"

namespace sorvo::audio {

const OverlapKernels overlap_kernels_baseline = make_overlap_kernels();

}  // namespace sorvo::audio
