#include "filter/difference_equation.h"

#include <algorithm>
#include <type_traits>

#include "filter/faint.h"

namespace sorvo::audio {
namespace {

/// How products are formed; those of slow ones are kept for the next sample, which may be the same.
struct Plainly {
    static constexpr bool is_slow = false;
    double operator()(double c, double x) const { return c * x; }
};
struct Faintly {
    static constexpr bool is_slow = true;
    double operator()(double c, double x) const { return product(c, x); }
};

/// Updates the state_n >= 1 values of z for one output and its sample, of which b_x(k) is the
/// product with b[k].
template <class State, class Products, class Times>
inline void update(const Products& b_x, const double* a, State* z, std::size_t state_n, double y,
                   Times times) {
    for (std::size_t k = 1; k < state_n; ++k) {
        z[k - 1] = static_cast<State>(b_x(k) + static_cast<double>(z[k]) - times(a[k], y));
    }
    z[state_n - 1] = static_cast<State>(b_x(state_n) - times(a[state_n], y));
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
template <std::size_t state_n, class Out, class In, class State, class Times>
void run_small(Out* dst, const In* src, const FilterCoefficients& coef, State* state, std::size_t n,
               bool reverse, Times times) {
    double b[state_n + 1];
    double a[state_n + 1];
    State z[state_n];
    std::copy_n(coef.b.data(), state_n + 1, b);
    std::copy_n(coef.a.data(), state_n + 1, a);
    std::copy_n(state, state_n, z);
    double products[state_n + 1] = {};
    double last = 0.0;
    for_each_index(n, reverse, [&](std::size_t i) {
        const auto x = static_cast<double>(src[i]);
        if (!Times::is_slow || x != last || x == 0.0) {
            for (std::size_t k = 0; k <= state_n; ++k) {
                products[k] = times(b[k], x);
            }
            last = x;
        }
        const double y = static_cast<double>(z[0]) + products[0];
        update([&](std::size_t k) { return products[k]; }, a, z, state_n, y, times);
        dst[i] = static_cast<Out>(y);
    });
    std::copy_n(z, state_n, state);
}

template <class Out, class In, class State, class Times>
void run(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
         bool reverse, Times times) {
    const double* const b = coef.b.data();
    const double* const a = coef.a.data();
    const std::size_t state_n = coef.b.size() - 1;
    switch (state_n) {
        case 0:
            return for_each_index(n, reverse, [&](std::size_t i) {
                dst[i] = static_cast<Out>(times(b[0], static_cast<double>(src[i])));
            });
        case 1:
            return run_small<1>(dst, src, coef, z, n, reverse, times);
        case 2:
            return run_small<2>(dst, src, coef, z, n, reverse, times);
        case 3:
            return run_small<3>(dst, src, coef, z, n, reverse, times);
        case 4:
            return run_small<4>(dst, src, coef, z, n, reverse, times);
        case 5:
            return run_small<5>(dst, src, coef, z, n, reverse, times);
        case 6:
            return run_small<6>(dst, src, coef, z, n, reverse, times);
        case 7:
            return run_small<7>(dst, src, coef, z, n, reverse, times);
        case 8:
            return run_small<8>(dst, src, coef, z, n, reverse, times);
        default:
            return for_each_index(n, reverse, [&](std::size_t i) {
                const auto x = static_cast<double>(src[i]);
                const auto b_x = [&](std::size_t k) { return times(b[k], x); };
                const double y = static_cast<double>(z[0]) + b_x(0);
                update(b_x, a, z, state_n, y, times);
                dst[i] = static_cast<Out>(y);
            });
    }
}

}  // namespace

template <class Out, class In, class State>
void run_difference_equation(Out* dst, const In* src, const FilterCoefficients& coef, State* z,
                             std::size_t n, bool reverse) {
    if (std::is_same_v<State, float>) {
        return run(dst, src, coef, z, n, reverse, Plainly());
    }
    constexpr std::size_t block_n = 64;
    for (std::size_t done = 0; done < n; done += block_n) {
        const std::size_t count = std::min(block_n, n - done);
        const std::size_t first = reverse ? n - done - count : done;
        if (any_faint(z, coef.b.size() - 1) || any_faint(src + first, count)) {
            run(dst + first, src + first, coef, z, count, reverse, Faintly());
        } else {
            run(dst + first, src + first, coef, z, count, reverse, Plainly());
        }
    }
}

template <class State>
void update_state(const FilterCoefficients& coef, State* z, double x, double y) {
    update([&](std::size_t k) { return coef.b[k] * x; }, coef.a.data(), z, coef.b.size() - 1, y,
           Plainly());
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
