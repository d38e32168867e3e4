#include "stft/overlap_kernels.h"
#include "stft/overlap_kernels.inl"

namespace sorvo::audio {

const OverlapKernels overlap_kernels_avx2 = make_overlap_kernels();

}  // namespace sorvo::audio
