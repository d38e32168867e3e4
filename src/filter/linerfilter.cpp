#include "filter/linerfilter.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "filter/difference_equation.h"
#include "filter/fir_filter.h"
#include "filter/repeating_input.h"
#include "filter/speculative_filter.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// Periods of the cycles in which filters end: with one or two state values mostly 1, 2 or 3.
constexpr std::size_t max_period = 192;
constexpr std::size_t max_short_period = 12;

}  // namespace

template <class Out, class In, class State>
void run_filter(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
                bool reverse, SimdLevel level) {
    const std::size_t state_n = coef.b.size() - 1;
    const Path<Out> to{dst, n, reverse};
    const Path<const In> from{src, n, reverse};
    const bool in_place = static_cast<const void*>(dst) == static_cast<const void*>(src);
    // All memory is had before the first output is written: a call that fails for want of it has
    // changed neither the state nor a signal that is filtered in place.
    std::optional<FirFilter<Out, In, State>> fir;
    std::optional<SpeculativeFilter<Out, In, State>> speculative;
    std::vector<State> seen;
    if (n >= min_fir_filter_n && is_fir(coef)) {
        fir.emplace(coef, level);
    } else if ((state_n == 1 || state_n == 2) && n >= min_speculative_filter_n) {
        speculative.emplace(coef, n, in_place, level);
    }
    if (n >= min_repeating_n) {
        seen = make_zeros<State>(2 * static_cast<std::uint64_t>(state_n));
    }

    for (std::size_t done = 0; done < n;) {
        const RepeatingInput stretch =
            find_repeating_input(from, done, fir || state_n <= 2 ? max_short_period : max_period);
        const std::size_t count = stretch.begin - done;
        if (fir) {
            fir->run(to.part(done, count), from.part(done, count), z);
        } else if (speculative) {
            speculative->run(to.part(done, count), from.part(done, count), z);
        } else {
            run_difference_equation(to.range(done, count), from.range(done, count), coef, z, count,
                                    reverse);
        }
        filter_repeating_input(to, from, stretch, coef, z, seen);
        done = stretch.end;
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

#define INSTANTIATE(Out, In, State)                                                               \
    template void linerfilter(Out*, const In*, const float*, const float*, State*, int, int, int, \
                              int, int, bool, SimdLevel);                                         \
    template void run_filter(Out*, const In*, const FilterCoefficients&, State*, std::size_t,     \
                             bool, SimdLevel);
INSTANTIATE(float, float, float)
INSTANTIATE(double, float, double)
INSTANTIATE(double, double, double)
INSTANTIATE(float, double, double)
#undef INSTANTIATE

}  // namespace sorvo::audio
