#include "filter/speculative_filter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "filter/difference_equation.h"
#include "filter/faint.h"
#include "filter/settling.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// Samples of a chunk between two checkpoints.
constexpr std::size_t checkpoint_distance = 64;
static_assert(checkpoint_distance % max_chunk_row_n == 0);
/// After a round with so many chunks that never met the true state, the next round waits.
constexpr std::size_t max_unmet_n = 8;
constexpr std::size_t max_state_n = 2;

/// 0 where the filter does not forget within a chunk.
template <class State>
std::size_t warm_up_n_of(const FilterCoefficients& coef) {
    const std::size_t settled_n = settling_n<State>(coef);
    return settled_n > max_chunk_n
               ? 0
               : std::max(min_warm_up_n, round_down_to_rows(settled_n + chunk_row_unit - 1));
}

/// A state of NaN stays, and makes every output NaN.
template <class Out>
void fill_with_nan(const Path<Out>& dst, std::size_t begin, std::size_t end) {
    std::fill_n(dst.range(begin, end - begin), end - begin, std::numeric_limits<Out>::quiet_NaN());
}

}  // namespace

template <class Out, class In, class State>
SpeculativeFilter<Out, In, State>::SpeculativeFilter(const FilterCoefficients& coef,
                                                     std::size_t max_n, bool in_place,
                                                     SimdLevel level)
    : coef_(coef),
      kernel_(static_cast<const ChunkKernelsOf<Out, In, State>&>(chunk_kernels(level))
                  .run_rows[coef.b.size() - 2]),
      warm_up_n_(warm_up_n_of<State>(coef)),
      checkpoints_(coef.b.size() - 1,
                   std::min(max_chunk_n, max_n / chunk_lane_n) / checkpoint_distance + 2),
      z_(make_zeros<State>((coef.b.size() - 1) * chunk_lane_n)),
      in_rows_(new LaneRow<In>[max_chunk_row_n]),
      out_rows_(new LaneRow<Out>[max_chunk_row_n]),
      in_place_(in_place) {
    if (in_place && warm_up_n_ > 0) {
        copy_.reserve(std::min(ChunkPlan{warm_up_n_, max_chunk_n}.size(), max_n));
    }
}

// Lanes with faint numbers idle with zeros meanwhile, and are run by themselves: a single product
// with a denormal number would hold up all.
template <class Out, class In, class State>
void SpeculativeFilter<Out, In, State>::run_rows(const Round& round, std::size_t position,
                                                 std::size_t n) {
    const bool reverse = round.src.reverse;
    const auto stride = static_cast<std::ptrdiff_t>(round.plan.chunk_n) * (reverse ? -1 : 1);
    Out* const dst = round.dst.range(position, n);
    const In* const src = round.src.range(position, n);
    const std::size_t state_n = coef_.b.size() - 1;
    State states[chunk_lane_n][max_state_n];
    bool is_idle[chunk_lane_n];
    bool any_idle = false;
    for (std::size_t lane = 0; lane < chunk_lane_n; ++lane) {
        const In* const x = src + static_cast<std::ptrdiff_t>(lane) * stride;
        is_idle[lane] = is_faint(x[0]) || is_faint(x[n - 1]);
        for (std::size_t k = 0; k < state_n; ++k) {
            is_idle[lane] |= is_faint(z_[k * chunk_lane_n + lane]);
        }
        any_idle |= is_idle[lane];
    }
    for (std::size_t i = 0; any_idle && i < z_.size(); ++i) {
        const std::size_t lane = i % chunk_lane_n;
        states[lane][i / chunk_lane_n] = z_[i];
        z_[i] = is_idle[lane] ? 0 : z_[i];
    }
    kernel_({dst, src, n, stride, reverse, coef_.b.data(), coef_.a.data(), z_.data(),
             in_rows_.get(), out_rows_.get(), any_idle ? is_idle : nullptr});
    for (std::size_t lane = 0; any_idle && lane < chunk_lane_n; ++lane) {
        if (is_idle[lane]) {
            const auto offset = static_cast<std::ptrdiff_t>(lane) * stride;
            run_difference_equation(dst + offset, src + offset, coef_, states[lane], n, reverse);
            for (std::size_t k = 0; k < state_n; ++k) {
                z_[k * chunk_lane_n + lane] = states[lane][k];
            }
        }
    }
}

// What a lane puts out while it warms up is replaced by the lane before it, later.
template <class Out, class In, class State>
void SpeculativeFilter<Out, In, State>::predict(const Round& round, const State* state) {
    for (std::size_t i = 0; i < z_.size(); ++i) {
        z_[i] = state[i / chunk_lane_n];
    }
    for (std::size_t i = 0; i < round.plan.warm_up_n; i += max_chunk_row_n) {
        run_rows(round, round.begin + i, std::min(max_chunk_row_n, round.plan.warm_up_n - i));
    }
}

template <class Out, class In, class State>
void SpeculativeFilter<Out, In, State>::run_chunks(const Round& round) {
    const std::size_t chunk_n = round.plan.chunk_n;
    checkpoints_.clear();
    checkpoints_.add(0, z_);
    for (std::size_t i = 0; i < chunk_n;) {
        const std::size_t n = std::min(max_chunk_row_n, chunk_n - i);
        run_rows(round, round.chunks_begin() + i, n);
        i += n;
        if (i % checkpoint_distance == 0 || i == chunk_n) {
            checkpoints_.add(i, z_);
        }
    }
}

template <class Out, class In, class State>
std::size_t SpeculativeFilter<Out, In, State>::verify(const Round& round, State* state) const {
    const std::size_t last = checkpoints_.size() - 1;
    checkpoints_.get(0, 0, state);
    std::size_t unmet_n = 0;
    for (std::size_t lane = 0; lane < chunk_lane_n; ++lane) {
        const std::size_t first = round.chunks_begin() + lane * round.plan.chunk_n;
        std::size_t i = 0;
        while (i < last && !checkpoints_.equals(i, lane, state)) {
            const std::size_t begin = first + checkpoints_.position(i);
            if (std::isnan(state[0])) {
                fill_with_nan(round.dst, begin, round.begin + round.plan.size());
                return unmet_n;
            }
            const std::size_t n = checkpoints_.position(i + 1) - checkpoints_.position(i);
            run_difference_equation(round.dst.range(begin, n), round.src.range(begin, n), coef_,
                                    state, n, round.src.reverse);
            ++i;
        }
        if (i < last) {
            checkpoints_.get(last, lane, state);
        } else if (!checkpoints_.equals(last, lane, state)) {
            ++unmet_n;
        }
    }
    return unmet_n;
}

template <class Out, class In, class State>
void SpeculativeFilter<Out, In, State>::run(const Path<Out>& dst, const Path<const In>& src,
                                            State* state) {
    std::size_t done = 0;
    const auto run_serially = [&](std::size_t n) {
        run_difference_equation(dst.range(done, n), src.range(done, n), coef_, state, n,
                                src.reverse);
        done += n;
    };
    std::size_t pause_n = 0;
    while (warm_up_n_ > 0) {
        const ChunkPlan plan = plan_chunks(src.n - done, warm_up_n_);
        if (plan.chunk_n == 0) {
            break;
        }
        const std::size_t n = plan.size();
        Path<const In> from = src;
        if (in_place_) {
            const In* const first = src.range(done, n);
            copy_.assign(first, first + n);
            from = {copy_.data(), n, src.reverse, done};
        }
        const Round round{dst, from, done, plan};
        predict(round, state);
        run_chunks(round);
        const std::size_t unmet_n = verify(round, state);
        done += n;
        if (std::isnan(state[0])) {
            fill_with_nan(dst, done, src.n);
            std::fill_n(state, coef_.b.size() - 1, state[0]);
            return;
        }
        // A filter that keeps failing soon is filtered without lanes; one that met silence
        // recovers.
        pause_n = unmet_n < max_unmet_n ? 0 : std::max(n, 2 * pause_n);
        run_serially(std::min(pause_n, src.n - done));
    }
    run_serially(src.n - done);
}

#define INSTANTIATE(Out, In, State) template class SpeculativeFilter<Out, In, State>;
INSTANTIATE(float, float, float)
INSTANTIATE(double, float, double)
INSTANTIATE(double, double, double)
INSTANTIATE(float, double, double)
#undef INSTANTIATE

}  // namespace sorvo::audio
