#include "mel/mel_kernels.h"

namespace sorvo::audio {

MelBand nonzero_band(const float* weights, std::size_t n) {
    std::size_t begin = 0;
    while (begin < n && weights[begin] == 0.0F) {
        ++begin;
    }
    std::size_t end = n;
    while (end > begin && weights[end - 1] == 0.0F) {
        --end;
    }
    return {weights + begin, begin, end};
}

const MelKernels& mel_kernels(CpuLevel level) {
    return for_level(level, mel_kernels_baseline, mel_kernels_avx2, mel_kernels_avx512);
}

}  // namespace sorvo::audio
