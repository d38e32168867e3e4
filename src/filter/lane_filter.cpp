#include "filter/lane_filter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "filter/filter_kernels.h"
#include "filter/linerfilter.h"
#include "filter/path.h"
#include "filter/settling.h"

namespace sorvo::audio {
namespace {

/// Samples before the stretches, however fast the filter forgets.
constexpr std::size_t min_warm_up_n = 32;
static_assert(min_lane_filter_n == (filter_lane_n + 1) * min_warm_up_n);
/// States are noted at these distances, for stretches whose guess was wrong.
constexpr std::size_t note_n = 64;
static_assert(note_n % max_filter_row_n == 0);
/// Samples of one stretch: few enough for the cache.
constexpr std::size_t max_stretch_n = 4096;
/// After a round with this many stretches that never met the true state, the next round waits.
constexpr std::size_t max_unmet_n = 8;

/// Lanes run `warm_up_n` samples from a common state, then their stretches of `stretch_n` samples
/// each. Lane 0 begins with the true state, so its warm-up counts, and a round has the length of
/// all stretches and one warm-up. Both are multiples of filter_row_unit.
struct Round {
    std::size_t warm_up_n;
    std::size_t stretch_n;

    std::size_t size() const { return warm_up_n + filter_lane_n * stretch_n; }
};

std::size_t round_down(std::size_t n) {
    return n / filter_row_unit * filter_row_unit;
}

/// What divides n samples into equal rounds, or into one if they are few.
Round plan_round(std::size_t n, std::size_t warm_up_n) {
    const std::size_t round_n = n / Round{warm_up_n, max_stretch_n}.size() + 1;
    const std::size_t size = n / round_n;
    return {warm_up_n, size < warm_up_n ? 0 : round_down((size - warm_up_n) / filter_lane_n)};
}

template <class State, std::size_t state_n>
using LaneStates = std::array<std::array<State, filter_lane_n>, state_n>;

/// The state of a lane, after `n` samples of its stretch.
template <class State, std::size_t state_n>
struct Note {
    LaneStates<State, state_n> z;
    std::size_t n;

    bool equals(const State* state, std::size_t lane) const {
        for (std::size_t k = 0; k < state_n; ++k) {
            if (std::memcmp(&z[k][lane], state + k, sizeof(State)) != 0) {
                return false;
            }
        }
        return true;
    }

    void get(State* state, std::size_t lane) const {
        for (std::size_t k = 0; k < state_n; ++k) {
            state[k] = z[k][lane];
        }
    }
};

template <class State, std::size_t state_n>
using Notes = std::vector<Note<State, state_n>>;

/// Filters a round from `position` on; `state` is the true one before and after. `notes` has room
/// for those of a stretch. Returns how many stretches never met the true state.
template <class Out, class In, class State, std::size_t state_n>
std::size_t filter_round(const Path<Out>& dst, const Path<const In>& src,
                         const FilterCoefficients& coef, State* state, std::size_t position,
                         const Round& round, const LaneFilterKernels<Out, In, State>& kernels,
                         Notes<State, state_n>& notes) {
    const bool reverse = src.reverse;
    const auto stride = static_cast<std::ptrdiff_t>(round.stretch_n) * (reverse ? -1 : 1);
    LaneStates<State, state_n> z;
    for (std::size_t k = 0; k < state_n; ++k) {
        z[k].fill(state[k]);
    }
    const auto run = kernels.run_rows[state_n - 1];
    const auto run_rows = [&](std::size_t from, std::size_t n) {
        run(dst.range(from, n), src.range(from, n), n, stride, reverse, coef.b.data(),
            coef.a.data(), z.front().data());
    };
    // What a lane puts out while it warms up is put right by the lane before it, later.
    for (std::size_t i = 0; i < round.warm_up_n; i += max_filter_row_n) {
        run_rows(position + i, std::min(max_filter_row_n, round.warm_up_n - i));
    }
    position += round.warm_up_n;
    notes.clear();
    notes.push_back({z, 0});
    for (std::size_t i = 0; i < round.stretch_n;) {
        const std::size_t n = std::min(max_filter_row_n, round.stretch_n - i);
        run_rows(position + i, n);
        i += n;
        if (i % note_n == 0 || i == round.stretch_n) {
            notes.push_back({z, i});
        }
    }

    notes.front().get(state, 0);
    std::size_t unmet_n = 0;
    for (std::size_t lane = 0; lane < filter_lane_n; ++lane) {
        const std::size_t first = position + lane * round.stretch_n;
        auto note = notes.begin();
        while (!note->equals(state, lane)) {
            const std::size_t done = note->n;
            if (++note == notes.end()) {
                ++unmet_n;
                break;
            }
            const std::size_t n = note->n - done;
            run_filter_plain(dst.range(first + done, n), src.range(first + done, n), coef, state, n,
                             reverse);
        }
        if (note != notes.end()) {
            notes.back().get(state, lane);
        }
    }
    return unmet_n;
}

template <std::size_t state_n, class Out, class In, class State>
void filter_rounds(const Path<Out>& dst, const Path<const In>& src, const FilterCoefficients& coef,
                   State* state, SimdLevel level) {
    const bool in_place = static_cast<const void*>(dst.data) == static_cast<const void*>(src.data);
    std::size_t done = 0;
    const auto run_plain = [&](std::size_t n) {
        run_filter_plain(dst.range(done, n), src.range(done, n), coef, state, n, src.reverse);
        done += n;
    };
    const std::size_t settled_n = settling_n<State>(coef);
    if (settled_n <= max_stretch_n) {
        const std::size_t warm_up_n =
            std::max(min_warm_up_n, round_down(settled_n + filter_row_unit - 1));
        // All memory is had before the first output is written: a call that fails for want of it
        // has changed neither the state nor a signal that is filtered in place.
        Notes<State, state_n> notes;
        notes.reserve(std::min(max_stretch_n, src.n / filter_lane_n) / note_n + 2);
        std::vector<In> copy;
        copy.reserve(in_place ? std::min(Round{warm_up_n, max_stretch_n}.size(), src.n) : 0);
        std::size_t pause_n = 0;
        for (;;) {
            const Round round = plan_round(src.n - done, warm_up_n);
            if (round.stretch_n < warm_up_n) {
                break;
            }
            const std::size_t n = round.size();
            Path<const In> from = src;
            if (in_place) {
                // The samples are needed again where a guess was wrong.
                const In* const first = src.range(done, n);
                copy.assign(first, first + n);
                from = {copy.data(), n, src.reverse, done};
            }
            const std::size_t unmet_n = filter_round<Out, In, State, state_n>(
                dst, from, coef, state, done, round, filter_kernels(level), notes);
            done += n;
            // A filter that keeps failing soon is filtered without lanes; one that met silence
            // recovers.
            pause_n = unmet_n < max_unmet_n ? 0 : std::max(n, 2 * pause_n);
            run_plain(std::min(pause_n, src.n - done));
        }
    }
    run_plain(src.n - done);
}

}  // namespace

template <class Out, class In, class State>
void filter_lanes(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
                  bool reverse, SimdLevel level) {
    const Path<Out> to{dst, n, reverse};
    const Path<const In> from{src, n, reverse};
    if (coef.b.size() == 2) {
        filter_rounds<1>(to, from, coef, z, level);
    } else {
        filter_rounds<2>(to, from, coef, z, level);
    }
}

template void filter_lanes(float*, const float*, const FilterCoefficients&, float*, std::size_t,
                           bool, SimdLevel);
template void filter_lanes(double*, const float*, const FilterCoefficients&, double*, std::size_t,
                           bool, SimdLevel);
template void filter_lanes(double*, const double*, const FilterCoefficients&, double*, std::size_t,
                           bool, SimdLevel);
template void filter_lanes(float*, const double*, const FilterCoefficients&, double*, std::size_t,
                           bool, SimdLevel);

}  // namespace sorvo::audio
