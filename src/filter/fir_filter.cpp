#include "filter/fir_filter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "filter/filter_kernels.h"
#include "filter/linerfilter.h"
#include "filter/path.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

constexpr std::size_t min_block_n = 1024;

/// Copies and converts n samples, in reverse order if asked.
template <class To, class From>
void convert(To* dst, const From* src, std::size_t n, bool reverse) {
    if (reverse) {
        for (std::size_t i = 0; i < n; ++i) {
            dst[i] = static_cast<To>(src[n - 1 - i]);
        }
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            dst[i] = static_cast<To>(src[i]);
        }
    }
}

/// The number of finite values at the end.
std::size_t count_finite_tail(const double* y, std::size_t n) {
    std::size_t count = 0;
    while (count < n && std::isfinite(y[n - 1 - count])) {
        ++count;
    }
    return count;
}

}  // namespace

bool is_fir(const FilterCoefficients& coef) {
    return coef.a.size() > 1 &&
           std::all_of(coef.a.begin() + 1, coef.a.end(), [](double a) { return a == 0.0; });
}

template <class Out, class In, class State>
void filter_fir(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
                bool reverse, SimdLevel level) {
    const FirKernels<State>& kernels = filter_kernels(level);
    const Path<Out> to{dst, n, reverse};
    const Path<const In> from{src, n, reverse};
    const std::size_t m = coef.b.size() - 1;
    const std::size_t block_n = std::max(min_block_n, m);
    // The last m inputs and outputs, then those of a block.
    auto x = make_zeros<double>(m + block_n + fir_step_n);
    auto y = make_zeros<double>(x.size());
    bool state_known = true;
    const auto restore_state = [&] {
        if (!state_known) {
            std::fill_n(z, m, State{0});
            for (std::size_t i = 0; i < m; ++i) {
                update_state(coef, z, x[i], y[i]);
            }
            state_known = true;
        }
    };
    std::size_t finite_n = 0;  // outputs without interruption up to here
    for (std::size_t done = 0; done < n;) {
        const std::size_t count = std::min(n - done, finite_n < m ? m : block_n);
        convert(&x[m], from.range(done, count), count, reverse);
        // What lies behind the block's end makes outputs that nobody takes, but must not alarm.
        std::fill_n(&x[m + count], fir_step_n, x[m + count - 1]);
        const std::size_t rounded_n = (count + fir_step_n - 1) / fir_step_n * fir_step_n;
        if (finite_n >= m && kernels.fir_outputs(&y[m], &x[m], coef.b.data(), m, rounded_n)) {
            state_known = false;
            finite_n += count;
        } else {
            restore_state();
            run_filter_plain(&y[m], &x[m], coef, z, count, false);
            const std::size_t tail_n = count_finite_tail(&y[m], count);
            finite_n = tail_n == count ? finite_n + count : tail_n;
        }
        convert(to.range(done, count), &y[m], count, reverse);
        done += count;
        std::copy_n(&x[count], m, x.data());
        std::copy_n(&y[count], m, y.data());
    }
    restore_state();
}

#define INSTANTIATE(Out, In, State)                                                           \
    template void filter_fir(Out*, const In*, const FilterCoefficients&, State*, std::size_t, \
                             bool, SimdLevel);
INSTANTIATE(float, float, float)
INSTANTIATE(double, float, double)
INSTANTIATE(double, double, double)
INSTANTIATE(float, double, double)
#undef INSTANTIATE

}  // namespace sorvo::audio
