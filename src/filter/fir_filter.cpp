#include "filter/fir_filter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "filter/difference_equation.h"
#include "filter/fir_kernels.h"
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

}  // namespace

bool is_fir(const FilterCoefficients& coef) {
    return coef.a.size() > 1 &&
           std::all_of(coef.a.begin() + 1, coef.a.end(), [](double a) { return a == 0.0; });
}

template <class Out, class In, class State>
FirFilter<Out, In, State>::FirFilter(const FilterCoefficients& coef, SimdLevel level)
    : coef_(coef),
      level_(level),
      m_(coef.b.size() - 1),
      block_n_(std::max(min_block_n, m_)),
      x_(make_zeros<double>(m_ + block_n_ + fir_step_n)),
      y_(make_zeros<double>(x_.size())) {}

template <class Out, class In, class State>
double FirFilter<Out, In, State>::output(std::size_t i) const {
    const double* const b = coef_.b.data();
    const double* const a = coef_.a.data();
    auto sum = static_cast<State>(x_[i - m_] * b[m_] - y_[i - m_] * a[m_]);
    for (std::size_t k = m_ - 1; k > 0; --k) {
        sum = static_cast<State>(b[k] * x_[i - k] + static_cast<double>(sum) - a[k] * y_[i - k]);
    }
    return static_cast<double>(sum) + b[0] * x_[i];
}

template <class Out, class In, class State>
bool FirFilter<Out, In, State>::correct(std::size_t n) {
    for (std::size_t i = m_; i < m_ + n; ++i) {
        if (!std::isfinite(y_[i])) {
            std::fill_n(&y_[i + 1], m_ + n - (i + 1), std::numeric_limits<double>::quiet_NaN());
            return false;
        }
        if (y_[i] == 0.0 && std::signbit(y_[i])) {
            y_[i] = output(i);
        }
    }
    return true;
}

template <class Out, class In, class State>
void FirFilter<Out, In, State>::run(const Path<Out>& dst, const Path<const In>& src, State* z) {
    const FirKernel<State>& kernel = fir_kernels(level_);
    // The first outputs depend on the state, the others on inputs alone.
    std::size_t count = std::min(src.n, m_);
    convert(&x_[m_], src.range(0, count), count, src.reverse);
    run_difference_equation(&y_[m_], &x_[m_], coef_, z, count, false);
    bool finite = count == 0 || std::isfinite(y_[m_ + count - 1]);
    std::size_t done = 0;
    for (;;) {
        convert(dst.range(done, count), &y_[m_], count, src.reverse);
        done += count;
        if (!finite || done == src.n) {
            break;
        }
        std::copy_n(&x_[count], m_, x_.data());
        std::copy_n(&y_[count], m_, y_.data());
        count = std::min(src.n - done, block_n_);
        convert(&x_[m_], src.range(done, count), count, src.reverse);
        const std::size_t rounded_n = (count + fir_step_n - 1) / fir_step_n * fir_step_n;
        if (!kernel.fir_outputs(&y_[m_], &x_[m_], coef_.b.data(), m_, rounded_n)) {
            finite = correct(count);
        }
    }
    constexpr auto nan = std::numeric_limits<double>::quiet_NaN();
    if (!finite) {
        std::fill_n(dst.range(done, src.n - done), src.n - done, static_cast<Out>(nan));
        std::fill_n(z, m_, static_cast<State>(nan));
    } else if (done > m_) {
        std::fill_n(z, m_, State{0});
        for (std::size_t i = count; i < count + m_; ++i) {
            update_state(coef_, z, x_[i], y_[i]);
        }
    }
}

#define INSTANTIATE(Out, In, State) template class FirFilter<Out, In, State>;
INSTANTIATE(float, float, float)
INSTANTIATE(double, float, double)
INSTANTIATE(double, double, double)
INSTANTIATE(float, double, double)
#undef INSTANTIATE

}  // namespace sorvo::audio
