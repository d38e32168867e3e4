#include "filter/fir_kernels.h"

#include <array>
#include <cstdint>

#include "filter/state_rounding.h"
#include "util/vectors.h"

namespace sorvo::audio {
namespace {

template <std::size_t width, std::size_t pack_n, class State>
[[gnu::always_inline]] inline bool outputs(double* y, const double* x, const double* b,
                                           std::size_t m, std::size_t n) {
    using Pack = typename Vectors<width>::Doubles;
    static_assert(fir_step_n % (width * pack_n) == 0);
    for (std::size_t i = 0; i < n; i += width * pack_n) {
        Pack sum[pack_n];
        for (std::size_t p = 0; p < pack_n; ++p) {
            Pack v;
            load(v, x + i + p * width - m);
            sum[p] = v * b[m];
            round_to_state<width, State>(sum[p]);
        }
        for (std::size_t k = m - 1; k > 0; --k) {
            for (std::size_t p = 0; p < pack_n; ++p) {
                Pack v;
                load(v, x + i + p * width - k);
                sum[p] = b[k] * v + sum[p];
                round_to_state<width, State>(sum[p]);
            }
        }
        for (std::size_t p = 0; p < pack_n; ++p) {
            Pack v;
            load(v, x + i + p * width);
            const Pack result = sum[p] + b[0] * v;
            store(y + i + p * width, result);
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

template <class State>
struct Levels {
    static bool baseline(double* y, const double* x, const double* b, std::size_t m,
                         std::size_t n) {
        return outputs<2, 8, State>(y, x, b, m, n);
    }

    [[gnu::target("avx2")]] static bool avx2(double* y, const double* x, const double* b,
                                             std::size_t m, std::size_t n) {
        return outputs<4, 8, State>(y, x, b, m, n);
    }

    [[gnu::target("avx512f,avx512bw,avx512dq,avx512vl")]] static bool avx512(
        double* y, const double* x, const double* b, std::size_t m, std::size_t n) {
        return outputs<8, 8, State>(y, x, b, m, n);
    }

    static constexpr std::array<decltype(&baseline), all_cpu_levels.size()> table = {baseline, avx2,
                                                                                     avx512};
};

}  // namespace

template <class State>
bool fir_outputs(double* y, const double* x, const double* b, std::size_t m, std::size_t n,
                 CpuLevel level) {
    return Levels<State>::table[static_cast<std::size_t>(level)](y, x, b, m, n);
}

template bool fir_outputs<float>(double*, const double*, const double*, std::size_t, std::size_t,
                                 CpuLevel);
template bool fir_outputs<double>(double*, const double*, const double*, std::size_t, std::size_t,
                                  CpuLevel);

}  // namespace sorvo::audio
