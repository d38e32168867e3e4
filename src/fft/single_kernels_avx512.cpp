#include "fft/single_kernels.h"
#include "fft/single_kernels.inl"

namespace sorvo::audio {

const SingleKernels single_kernels_avx512 = make_single_kernels();

}  // namespace sorvo::audio
