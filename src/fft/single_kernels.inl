// The kernels of single_kernels.h for the level of the including translation unit.
#include "fft/lane_fft_single.inl"

namespace sorvo::audio {
namespace {

std::uint32_t largest(const float* data, std::size_t n) {
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

bool any_zero(const float* data, std::size_t n) {
    unsigned found = 0;
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        found |= static_cast<unsigned>(any_zero(load(data + i)));
    }
    for (; i < n; ++i) {
        found |= static_cast<unsigned>(data[i] == 0.0F);
    }
    return found != 0;
}

constexpr SingleKernels make_single_kernels() {
    return {largest, any_zero, single_real_pow2, single_inverse_pow2};
}

}  // namespace
}  // namespace sorvo::audio
