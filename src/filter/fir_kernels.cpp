#include "filter/fir_kernels.h"

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// As many outputs at a time as make independent chains of additions.
template <class State>
bool fir_outputs(double* y, const double* x, const double* b, std::size_t m, std::size_t n) {
    constexpr std::size_t vector_n = 8;
    static_assert(fir_step_n % (double_lane_n * vector_n) == 0);
    for (std::size_t i = 0; i < n; i += double_lane_n * vector_n) {
        DoubleVec sum[vector_n];
        for (std::size_t v = 0; v < vector_n; ++v) {
            sum[v] = rounded_to<State>(load_wide(x + i + v * double_lane_n - m) * b[m]);
        }
        for (std::size_t k = m - 1; k > 0; --k) {
            for (std::size_t v = 0; v < vector_n; ++v) {
                const DoubleVec input = load_wide(x + i + v * double_lane_n - k);
                sum[v] = rounded_to<State>(b[k] * input + sum[v]);
            }
        }
        for (std::size_t v = 0; v < vector_n; ++v) {
            const std::size_t first = i + v * double_lane_n;
            store_rounded(y + first, sum[v] + b[0] * load_wide(x + first));
        }
    }
    // Without its sign, a number that is not finite has the highest bit after adding 0x0010...0,
    // and of all numbers zero alone has it after subtracting 1.
    std::uint64_t flags = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const auto bits = __builtin_bit_cast(std::uint64_t, y[i]);
        const std::uint64_t magnitude = bits & 0x7FFFFFFFFFFFFFFFU;
        flags |= ((magnitude - 1) & bits) | (magnitude + 0x0010000000000000U);
    }
    return flags >> 63U == 0;
}

}  // namespace

const FirKernels fir_kernels = {{fir_outputs<float>}, {fir_outputs<double>}};

}  // namespace sorvo::audio::SORVO_LEVEL
