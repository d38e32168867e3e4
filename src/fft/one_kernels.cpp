#include "fft/one_kernels.h"

#include "fft/one_general.h"
#include "fft/one_pow2.h"
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

const OneKernels one_kernels = {
    {one_real_pow2, one_real_general<Products::needed>, one_real_general<Products::literal>},
    {one_inverse_pow2, one_inverse_general<Products::needed>,
     one_inverse_general<Products::literal>},
    largest_magnitude};

}  // namespace sorvo::audio::SORVO_LEVEL
