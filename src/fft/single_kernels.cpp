#include "fft/single_kernels.h"

#include "fft/lane_fft_single_general.inl"
#include "fft/lane_fft_single_pow2.inl"
#include "simd/magnitude.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

std::uint32_t largest_magnitude(const float* data, std::size_t n) {
    LargestMagnitude largest;
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        largest.see(load(data + i));
    }
    for (; i < n; ++i) {
        largest.see(data[i]);
    }
    return largest.bits();
}

}  // namespace

const SingleKernels single_kernels = {{single_real_pow2, single_real_general},
                                      {single_inverse_pow2, single_inverse_general},
                                      largest_magnitude};

}  // namespace sorvo::audio::SORVO_LEVEL
