// The kernels of single_kernels.h for the level of the including translation unit.
#include "fft/lane_fft_single.inl"

namespace sorvo::audio {
namespace {

bool any_zero(const float* data, std::size_t n) {
    constexpr std::size_t group = 4;
    Pack smallest[group];
    for (Pack& pack : smallest) {
        pack = broadcast(1.0F);
    }
    for (std::size_t i = 0; i < n; i += group * lane_n) {
        for (std::size_t j = 0; j < group; ++j) {
            smallest[j] = smaller_magnitude(smallest[j], load(data + i + j * lane_n));
        }
    }
    return any_zero(smaller_magnitude(smaller_magnitude(smallest[0], smallest[1]),
                                      smaller_magnitude(smallest[2], smallest[3])));
}

constexpr SingleKernels make_single_kernels() {
    return {single_real_pow2, single_inverse_pow2, any_zero};
}

}  // namespace
}  // namespace sorvo::audio
