#include "filter/linerfilter.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "filter/fir_filter.h"
#include "filter/lane_filter.h"
#include "util/zeros.h"

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
void run_filter_plain(Out* dst, const In* src, const FilterCoefficients& coef, State* z,
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

template <class Out, class In, class State>
void run_filter(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
                bool reverse, SimdLevel level) {
    const std::size_t state_n = coef.b.size() - 1;
    if (n >= min_fir_filter_n && is_fir(coef)) {
        filter_fir(dst, src, coef, z, n, reverse, level);
    } else if ((state_n == 1 || state_n == 2) && n >= min_lane_filter_n) {
        filter_lanes(dst, src, coef, z, n, reverse, level);
    } else {
        run_filter_plain(dst, src, coef, z, n, reverse);
    }
}

template <class Out, class In, class Coef, class State>
void linerfilter(Out* dst, const In* src, const Coef* n_coef, const Coef* d_coef, State* zi,
                 int dst_n, int src_n, int n_coef_n, int d_coef_n, int zi_n, bool reverse,
                 SimdLevel level) {
    const FilterCoefficients coef(n_coef, d_coef, n_coef_n, d_coef_n);
    const std::size_t state_n = coef.b.size() - 1;
    std::vector<State> rest;
    if (state_n >= 1 && (zi == nullptr || static_cast<std::int64_t>(state_n) > zi_n)) {
        rest = make_zeros<State>(state_n);
        zi = rest.data();
    }
    const int n = std::max(std::min(dst_n, src_n), 0);
    run_filter(dst, src, coef, zi, static_cast<std::size_t>(n), reverse, level);
}

template void linerfilter(float*, const float*, const float*, const float*, float*, int, int, int,
                          int, int, bool, SimdLevel);
template void linerfilter(double*, const float*, const float*, const float*, double*, int, int, int,
                          int, int, bool, SimdLevel);
template void linerfilter(double*, const double*, const float*, const float*, double*, int, int,
                          int, int, int, bool, SimdLevel);
template void linerfilter(float*, const double*, const float*, const float*, double*, int, int, int,
                          int, int, bool, SimdLevel);

#define INSTANTIATE(Out, In, State)                                                           \
    template void run_filter_plain(Out*, const In*, const FilterCoefficients&, State*,        \
                                   std::size_t, bool);                                        \
    template void run_filter(Out*, const In*, const FilterCoefficients&, State*, std::size_t, \
                             bool, SimdLevel);
INSTANTIATE(float, float, float)
INSTANTIATE(double, float, double)
INSTANTIATE(double, double, double)
INSTANTIATE(float, double, double)
#undef INSTANTIATE

template void run_filter_plain(double*, const double*, const FilterCoefficients&, float*,
                               std::size_t, bool);
template void update_state(const FilterCoefficients&, float*, double, double);
template void update_state(const FilterCoefficients&, double*, double, double);

}  // namespace sorvo::audio
