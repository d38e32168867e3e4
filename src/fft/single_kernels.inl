// The kernels of single_kernels.h for the level of the including translation unit.
#include "fft/lane_fft_single_general.inl"
#include "fft/lane_fft_single_pow2.inl"

namespace sorvo::audio {
namespace {

std::uint32_t largest_magnitude(const float* data, std::size_t n) {
    Magnitude magnitude;
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        magnitude.see(load(data + i));
    }
    for (; i < n; ++i) {
        magnitude.see(data[i]);
    }
    return magnitude.bits();
}

constexpr SingleKernels make_single_kernels() {
    return {{single_real_pow2, single_real_general},
            {single_inverse_pow2, single_inverse_general},
            largest_magnitude};
}

}  // namespace
}  // namespace sorvo::audio
