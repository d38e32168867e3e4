#include "filter/filter_kernels.h"

namespace sorvo::audio {

const FilterKernels& filter_kernels(CpuLevel level) {
    switch (level) {
        case CpuLevel::avx512:
            return filter_kernels_avx512;
        case CpuLevel::avx2:
            return filter_kernels_avx2;
        case CpuLevel::baseline:
            break;
    }
    return filter_kernels_baseline;
}

}  // namespace sorvo::audio
