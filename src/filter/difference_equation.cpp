#include "filter/difference_equation.h"

#include <algorithm>

namespace sorvo::audio {
namespace {

/// Updates the state_n >= 1 values of z for one sample and its output.
template <class State>
inline void update(const double* b, const double* a, State* z, std::size_t state_n, double x,
                   double y) {
    for (std::size_t k = 1; k < state_n; ++k) {
        z[k - 1] = static_cast<State>(b[k] * x + static_cast<double>(z[k]) - a[k] * y);
    }
    z[state_n - 1] = static_cast<State>(x * b[state_n] - y * a[state_n]);
}

template <class State>
inline double step(const double* b, const double* a, State* z, std::size_t state_n, double x) {
    const double y = static_cast<double>(z[0]) + b[0] * x;
    update(b, a, z, state_n, x, y);
    return y;
}

template <class Function>
void for_each_index(std::size_t n, bool reverse, Function function) {
    if (reverse) {
        for (std::size_t i = n; i-- > 0;) {
            function(i);
        }
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            function(i);
        }
    }
}

/// A state of constant size: everything stays in registers.
template <std::size_t state_n, class Out, class In, class State>
void run_small(Out* dst, const In* src, const FilterCoefficients& coef, State* state, std::size_t n,
               bool reverse) {
    double b[state_n + 1];
    double a[state_n + 1];
    State z[state_n];
    std::copy_n(coef.b.data(), state_n + 1, b);
    std::copy_n(coef.a.data(), state_n + 1, a);
    std::copy_n(state, state_n, z);
    for_each_index(n, reverse, [&](std::size_t i) {
        dst[i] = static_cast<Out>(step(b, a, z, state_n, static_cast<double>(src[i])));
    });
    std::copy_n(z, state_n, state);
}

}  // namespace

template <class Out, class In, class State>
void run_difference_equation(Out* dst, const In* src, const FilterCoefficients& coef, State* z,
                             std::size_t n, bool reverse) {
    const double* const b = coef.b.data();
    const double* const a = coef.a.data();
    const std::size_t state_n = coef.b.size() - 1;
    switch (state_n) {
        case 0:
            return for_each_index(n, reverse, [&](std::size_t i) {
                dst[i] = static_cast<Out>(static_cast<double>(src[i]) * b[0]);
            });
        case 1:
            return run_small<1>(dst, src, coef, z, n, reverse);
        case 2:
            return run_small<2>(dst, src, coef, z, n, reverse);
        case 3:
            return run_small<3>(dst, src, coef, z, n, reverse);
        case 4:
            return run_small<4>(dst, src, coef, z, n, reverse);
        case 5:
            return run_small<5>(dst, src, coef, z, n, reverse);
        case 6:
            return run_small<6>(dst, src, coef, z, n, reverse);
        case 7:
            return run_small<7>(dst, src, coef, z, n, reverse);
        case 8:
            return run_small<8>(dst, src, coef, z, n, reverse);
        default:
            return for_each_index(n, reverse, [&](std::size_t i) {
                dst[i] = static_cast<Out>(step(b, a, z, state_n, static_cast<double>(src[i])));
            });
    }
}

template <class State>
void update_state(const FilterCoefficients& coef, State* z, double x, double y) {
    update(coef.b.data(), coef.a.data(), z, coef.b.size() - 1, x, y);
}

#define INSTANTIATE(Out, In, State)                                                           \
    template void run_difference_equation(Out*, const In*, const FilterCoefficients&, State*, \
                                          std::size_t, bool);
INSTANTIATE(float, float, float)
INSTANTIATE(double, float, double)
INSTANTIATE(double, double, double)
INSTANTIATE(float, double, double)
INSTANTIATE(double, double, float)
#undef INSTANTIATE

template void update_state(const FilterCoefficients&, float*, double, double);
template void update_state(const FilterCoefficients&, double*, double, double);

}  // namespace sorvo::audio
