#include "filter/filter_kernels.h"
#include "filter/filter_kernels.inl"

namespace sorvo::audio {

const FilterKernels filter_kernels_avx512 = make_filter_kernels();

}  // namespace sorvo::audio
