#include "filter/lane_filter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "filter/lane_kernels.h"
#include "filter/linerfilter.h"
#include "filter/path.h"

namespace sorvo::audio {
namespace {

constexpr std::size_t warm_up_n = 512;
/// States are noted at these distances, for stretches whose guess was wrong.
constexpr std::size_t note_n = 256;
/// Samples of one stretch: enough to make the warm-up cheap, few enough for the cache.
constexpr std::size_t min_stretch_n = 512;
constexpr std::size_t max_stretch_n = 4096;
/// After a round with this many stretches that never met the true state no other one is tried.
constexpr std::size_t max_unmet_n = 8;

static_assert(min_lane_filter_n == warm_up_n + min_stretch_n * filter_lane_n);

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

/// Filters filter_lane_n stretches of stretch_n samples from `position` on; `state` is the true one
/// before and after. Returns how many stretches never met it.
template <class Out, class In, class State, std::size_t state_n>
std::size_t filter_round(const Path<Out>& dst, const Path<const In>& src,
                         const FilterCoefficients& coef, State* state, std::size_t position,
                         std::size_t stretch_n, CpuLevel level) {
    const bool reverse = src.reverse;
    const auto stride = static_cast<std::ptrdiff_t>(stretch_n) * (reverse ? -1 : 1);
    const auto run_rows = [&](Out* to, std::size_t from, LaneStates<State, state_n>& z) {
        filter_lane_rows<Out, In, State, state_n>(to, src.range(from, filter_row_n), stride,
                                                  reverse, coef.b.data(), coef.a.data(), z, level);
    };
    LaneStates<State, state_n> z{};
    for (std::size_t i = 0; i < warm_up_n; i += filter_row_n) {
        run_rows(nullptr, position - warm_up_n + i, z);
    }
    for (std::size_t k = 0; k < state_n; ++k) {
        z[k][0] = state[k];
    }
    std::vector<Note<State, state_n>> notes{{z, 0}};
    for (std::size_t i = 0; i < stretch_n; i += filter_row_n) {
        run_rows(dst.range(position + i, filter_row_n), position + i, z);
        const std::size_t n = i + filter_row_n;
        if (n % note_n == 0 || n == stretch_n) {
            notes.push_back({z, n});
        }
    }

    std::size_t unmet_n = 0;
    for (std::size_t lane = 0; lane < filter_lane_n; ++lane) {
        const std::size_t first = position + lane * stretch_n;
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
                   State* state, CpuLevel level) {
    const bool in_place = static_cast<const void*>(dst.data) == static_cast<const void*>(src.data);
    const auto run_plain = [&](std::size_t first, std::size_t n) {
        run_filter_plain(dst.range(first, n), src.range(first, n), coef, state, n, src.reverse);
    };
    run_plain(0, warm_up_n);
    std::size_t done = warm_up_n;
    std::size_t round_n = (src.n - done) / (filter_lane_n * max_stretch_n) + 1;
    std::vector<In> copy;
    for (; round_n > 0; --round_n) {
        const std::size_t stretch_n =
            (src.n - done) / round_n / (filter_lane_n * filter_row_n) * filter_row_n;
        const std::size_t n = filter_lane_n * stretch_n;
        std::size_t unmet_n = 0;
        if (in_place) {
            // The samples are needed again where a guess was wrong.
            const std::size_t first = done - warm_up_n;
            const In* const from = src.range(first, warm_up_n + n);
            copy.assign(from, from + warm_up_n + n);
            const Path<const In> copied{copy.data(), copy.size(), src.reverse, first};
            unmet_n = filter_round<Out, In, State, state_n>(dst, copied, coef, state, done,
                                                            stretch_n, level);
        } else {
            unmet_n = filter_round<Out, In, State, state_n>(dst, src, coef, state, done, stretch_n,
                                                            level);
        }
        done += n;
        if (unmet_n >= max_unmet_n) {
            break;
        }
    }
    run_plain(done, src.n - done);
}

}  // namespace

template <class Out, class In, class State>
void filter_lanes(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
                  bool reverse, CpuLevel level) {
    const Path<Out> to{dst, n, reverse};
    const Path<const In> from{src, n, reverse};
    if (coef.b.size() == 2) {
        filter_rounds<1>(to, from, coef, z, level);
    } else {
        filter_rounds<2>(to, from, coef, z, level);
    }
}

template void filter_lanes(float*, const float*, const FilterCoefficients&, float*, std::size_t,
                           bool, CpuLevel);
template void filter_lanes(double*, const float*, const FilterCoefficients&, double*, std::size_t,
                           bool, CpuLevel);
template void filter_lanes(double*, const double*, const FilterCoefficients&, double*, std::size_t,
                           bool, CpuLevel);
template void filter_lanes(float*, const double*, const FilterCoefficients&, double*, std::size_t,
                           bool, CpuLevel);

}  // namespace sorvo::audio
