#include "resample/resample_kernels.h"
#include "resample/resample_kernels.inl"

namespace sorvo::audio {

const ResampleKernels resample_kernels_avx512 = {run_lanes};

}  // namespace sorvo::audio
