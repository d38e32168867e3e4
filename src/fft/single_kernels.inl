// The kernels of single_kernels.h for the level of the including translation unit.
#include "fft/lane_fft_single_general.inl"
#include "fft/lane_fft_single_pow2.inl"

namespace sorvo::audio {
namespace {

std::uint32_t largest_magnitude(const float* data, std::size_t n) {
    Magnitude magnitudes[2];
    std::size_t i = 0;
    for (; i + 2 * lane_n <= n; i += 2 * lane_n) {
        magnitudes[0].see(load(data + i));
        magnitudes[1].see(load(data + i + lane_n));
    }
    if (i + lane_n <= n) {
        magnitudes[0].see(load(data + i));
        i += lane_n;
    }
    for (; i < n; ++i) {
        magnitudes[0].see(data[i]);
    }
    const std::uint32_t bits[2] = {magnitudes[0].bits(), magnitudes[1].bits()};
    return bits[0] > bits[1] ? bits[0] : bits[1];
}

constexpr SingleKernels make_single_kernels() {
    return {{single_real_pow2, single_real_general},
            {single_inverse_pow2, single_inverse_general},
            largest_magnitude};
}

}  // namespace
}  // namespace sorvo::audio
