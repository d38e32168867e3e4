#include "filter/repeating_input.h"

#include <algorithm>
#include <cstring>

#include "filter/difference_equation.h"
#include "filter/faint.h"

namespace sorvo::audio {
namespace {

/// Stretches are noticed by so many samples of theirs, which are looked at so far apart.
constexpr std::size_t probe_n = min_repeating_n / 2;
/// Of faint samples, which are what filters make of silence.
constexpr std::size_t max_faint_period = 192;
/// States are compared after at least so many samples, a multiple of all short cycles.
constexpr std::size_t min_step_n = 24;

/// Whether the bits of n values at x are those `period` values further on.
template <class T>
bool repeats(const T* x, std::size_t period, std::size_t n) {
    return std::memcmp(x, x + period, n * sizeof(T)) == 0;
}

/// The period of probe_n values, 0 where there is none up to max_period.
template <class T>
std::size_t period_of(const T* x, std::size_t max_period) {
    // For nearly all signals this loop, several values at a time, is all there is to do.
    int candidate_n = 0;
    for (std::size_t period = 1; period <= max_period; ++period) {
        candidate_n += x[0] == x[period] ? 1 : 0;
    }
    for (std::size_t period = 1; candidate_n > 0 && period <= max_period; ++period) {
        if (x[0] == x[period] && repeats(x, period, probe_n - period)) {
            return period;
        }
    }
    return 0;
}

}  // namespace

template <class In>
RepeatingInput find_repeating_input(const Path<const In>& src, std::size_t position,
                                    std::size_t max_period) {
    for (std::size_t begin = position; src.n - begin >= probe_n; begin += probe_n) {
        const In* const probe = src.range(begin, probe_n);
        const std::size_t period =
            period_of(probe, any_faint(probe, 3) ? max_faint_period : max_period);
        if (period == 0) {
            continue;
        }
        std::size_t end = begin + probe_n;
        for (std::size_t step = min_repeating_n; step > 0;) {
            if (src.n - end >= step &&
                repeats(src.range(end - period, period + step), period, step)) {
                end += step;
            } else {
                step /= 2;
            }
        }
        std::size_t first = begin;
        while (first > position && repeats(src.range(first - 1, period + 1), period, 1)) {
            --first;
        }
        if (end - first >= min_repeating_n) {
            return {first, end, period};
        }
        begin = end - probe_n;
    }
    return {src.n, src.n, 0};
}

template <class Out, class In, class State>
void filter_repeating_input(const Path<Out>& dst, const Path<const In>& src,
                            const RepeatingInput& stretch, const FilterCoefficients& coef, State* z,
                            std::vector<State>& seen) {
    if (stretch.begin == stretch.end) {
        return;
    }
    std::size_t done = stretch.begin;
    const auto run = [&](std::size_t n) {
        run_difference_equation(dst.range(done, n), src.range(done, n), coef, z, n, src.reverse);
        done += n;
    };
    // Looks for a state that was there before: one step ago, or at `mark`, which moves on whenever
    // a fifth of all samples came after it.
    const std::size_t step_n = (min_step_n + stretch.period - 1) / stretch.period * stretch.period;
    const std::size_t state_n = coef.b.size() - 1;
    State* const last = seen.data();
    State* const marked = last + state_n;
    const auto equal = [&](const State* state) {
        // Most states differ in their first value already.
        return state_n == 0 || (!(z[0] < state[0] || z[0] > state[0]) &&
                                std::memcmp(z, state, state_n * sizeof(State)) == 0);
    };
    std::size_t mark = done;
    std::copy_n(z, state_n, marked);
    std::size_t cycle_n = 0;
    while (cycle_n == 0 && stretch.end - done >= step_n) {
        std::copy_n(z, state_n, last);
        run(step_n);
        cycle_n = equal(last) ? step_n : equal(marked) ? done - mark : 0;
        if (done - mark > (done - stretch.begin) / 5) {
            mark = done;
            std::copy_n(z, state_n, marked);
        }
    }
    if (cycle_n > 0) {
        const std::size_t begin = done - cycle_n;
        while (stretch.end - done >= cycle_n) {
            const std::size_t n = std::min(done - begin, (stretch.end - done) / cycle_n * cycle_n);
            std::copy_n(dst.range(begin, n), n, dst.range(done, n));
            done += n;
        }
    }
    run(stretch.end - done);
}

#define INSTANTIATE(Out, In, State)                                                                \
    template void filter_repeating_input(const Path<Out>&, const Path<const In>&,                  \
                                         const RepeatingInput&, const FilterCoefficients&, State*, \
                                         std::vector<State>&);
INSTANTIATE(float, float, float)
INSTANTIATE(double, float, double)
INSTANTIATE(double, double, double)
INSTANTIATE(float, double, double)
#undef INSTANTIATE

template RepeatingInput find_repeating_input(const Path<const float>&, std::size_t, std::size_t);
template RepeatingInput find_repeating_input(const Path<const double>&, std::size_t, std::size_t);

}  // namespace sorvo::audio
