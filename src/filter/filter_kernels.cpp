#include "filter/filter_kernels.h"

namespace sorvo::audio {

const FilterKernels& filter_kernels(CpuLevel level) {
    return for_level(level, filter_kernels_baseline, filter_kernels_avx2, filter_kernels_avx512);
}

}  // namespace sorvo::audio
