#include "resample/resample_kernels.h"
#include "resample/resample_kernels.inl"

namespace sorvo::audio {

const ResampleKernels resample_kernels_baseline = {run_lanes};

}  // namespace sorvo::audio
