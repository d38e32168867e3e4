#include "fft/single_kernels.h"
#include "fft/single_kernels.inl"

namespace sorvo::audio {

const SingleKernels single_kernels_baseline = make_single_kernels();

}  // namespace sorvo::audio
