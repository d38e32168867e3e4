// Outputs of a filter without feedback, as many at a time as make independent chains of additions.
#pragma once

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

template <class State>
bool fir_outputs(double* y, const double* x, const double* b, std::size_t m, std::size_t n) {
    constexpr std::size_t pack_n = 8;
    static_assert(fir_step_n % (double_lane_n * pack_n) == 0);
    for (std::size_t i = 0; i < n; i += double_lane_n * pack_n) {
        DoubleVec sum[pack_n];
        for (std::size_t p = 0; p < pack_n; ++p) {
            sum[p] = rounded_to<State>(load_wide(x + i + p * double_lane_n - m) * b[m]);
        }
        for (std::size_t k = m - 1; k > 0; --k) {
            for (std::size_t p = 0; p < pack_n; ++p) {
                const DoubleVec v = load_wide(x + i + p * double_lane_n - k);
                sum[p] = rounded_to<State>(b[k] * v + sum[p]);
            }
        }
        for (std::size_t p = 0; p < pack_n; ++p) {
            const std::size_t first = i + p * double_lane_n;
            store_rounded(y + first, sum[p] + b[0] * load_wide(x + first));
        }
    }
    // Without its sign, a finite number that is not zero is 1 to 0x7FEF...F; less 1 and plus
    // 0x0010...0 all others have the highest bit.
    std::uint64_t flags = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const auto bits = __builtin_bit_cast(std::uint64_t, y[i]) & 0x7FFFFFFFFFFFFFFFU;
        flags |= (bits - 1) | (bits + 0x0010000000000000U);
    }
    return flags >> 63U == 0;
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
