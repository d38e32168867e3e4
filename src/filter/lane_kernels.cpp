#include "filter/lane_kernels.h"

#include <cstdint>
#include <type_traits>

#include "filter/state_rounding.h"
#include "util/vectors.h"

namespace sorvo::audio {
namespace {

constexpr std::ptrdiff_t lane_n = filter_lane_n;
static_assert(max_filter_row_n == filter_lane_n, "one lane is prefetched per row");

template <class T>
using Rows = T[max_filter_row_n][filter_lane_n];

/// Brings the samples of all lanes row by row, in the order in which the filter takes them.
template <class T>
[[gnu::always_inline]] inline void fetch_rows(Rows<T>& rows, const T* src, std::ptrdiff_t row_n,
                                              std::ptrdiff_t stride, bool reverse) {
    constexpr auto n = static_cast<std::ptrdiff_t>(square_n<T>);
    static_assert(filter_row_unit % square_n<T> == 0);
    T* const first_row = reverse ? rows[row_n - 1] : rows[0];
    const std::ptrdiff_t row_step = reverse ? -lane_n : lane_n;
    for (std::ptrdiff_t l = 0; l < lane_n; l += n) {
        for (std::ptrdiff_t i = 0; i < row_n; i += n) {
            transpose_square(first_row + i * row_step + l, row_step, src + l * stride + i, stride);
        }
    }
}

template <class T>
[[gnu::always_inline]] inline void store_rows(T* dst, std::ptrdiff_t row_n, std::ptrdiff_t stride,
                                              const Rows<T>& rows, bool reverse) {
    constexpr auto n = static_cast<std::ptrdiff_t>(square_n<T>);
    static_assert(filter_row_unit % square_n<T> == 0);
    const T* const first_row = reverse ? rows[row_n - 1] : rows[0];
    const std::ptrdiff_t row_step = reverse ? -lane_n : lane_n;
    for (std::ptrdiff_t l = 0; l < lane_n; l += n) {
        for (std::ptrdiff_t i = 0; i < row_n; i += n) {
            transpose_square(dst + l * stride + i, stride, first_row + i * row_step + l, row_step);
        }
    }
}

/// Where the lanes will read or write soon.
struct Ahead {
    std::uintptr_t first;
    std::ptrdiff_t stride_bytes;
    std::size_t run_bytes;

    template <class T>
    Ahead(const T* current, std::ptrdiff_t stride, bool reverse)
        : first(reinterpret_cast<std::uintptr_t>(current) +
                static_cast<std::uintptr_t>(reverse ? -distance : distance) * sizeof(T)),
          stride_bytes(stride * static_cast<std::ptrdiff_t>(sizeof(T))),
          run_bytes(max_filter_row_n * sizeof(T)) {}

    [[gnu::always_inline]] void prefetch_lane(std::size_t lane) const {
        const std::uintptr_t lane_first = first + lane * static_cast<std::uintptr_t>(stride_bytes);
        for (std::size_t i = 0; i < run_bytes; i += cache_line_n) {
            prefetch(lane_first + i);
        }
    }

    static constexpr std::ptrdiff_t distance = 2 * max_filter_row_n;
};

template <std::size_t width, class T>
[[gnu::always_inline]] inline void load_wide(typename Vectors<width>::Doubles& v, const T* from) {
    if constexpr (std::is_same_v<T, double>) {
        load(v, from);
    } else {
        typename Vectors<width>::Floats narrow_v;
        load(narrow_v, from);
        widen<width>(v, narrow_v);
    }
}

template <std::size_t width, class T>
[[gnu::always_inline]] inline void store_rounded(T* to, const typename Vectors<width>::Doubles& v) {
    if constexpr (std::is_same_v<T, double>) {
        store(to, v);
    } else {
        typename Vectors<width>::Floats narrow_v;
        narrow<width>(narrow_v, v);
        store(to, narrow_v);
    }
}

/// The difference equation for all lanes, pack_n packs of them at a time. Meanwhile the samples
/// after the next ones are asked for, lane by lane: so many streams in short runs are more than the
/// processor foresees, and asking for all at once would make it wait.
template <std::size_t width, std::size_t pack_n, class Out, class In, class State,
          std::size_t state_n>
[[gnu::always_inline]] inline void filter_rows(Rows<Out>& out, const Rows<In>& in,
                                               std::size_t row_n, const double* b, const double* a,
                                               LaneStates<State, state_n>& z, const Ahead& next_in,
                                               const Ahead& next_out) {
    using Pack = typename Vectors<width>::Doubles;
    for (std::size_t first = 0; first < filter_lane_n; first += pack_n * width) {
        Pack s[state_n][pack_n];
        for (std::size_t k = 0; k < state_n; ++k) {
            for (std::size_t p = 0; p < pack_n; ++p) {
                load_wide<width>(s[k][p], &z[k][first + p * width]);
            }
        }
        for (std::size_t row = 0; row < row_n; ++row) {
            if (row >= first && row < first + pack_n * width) {
                next_in.prefetch_lane(row);
                next_out.prefetch_lane(row);
            }
            for (std::size_t p = 0; p < pack_n; ++p) {
                const std::size_t lane = first + p * width;
                Pack x;
                load_wide<width>(x, &in[row][lane]);
                const Pack y = s[0][p] + b[0] * x;
                store_rounded<width>(&out[row][lane], y);
                for (std::size_t k = 1; k < state_n; ++k) {
                    s[k - 1][p] = b[k] * x + s[k][p] - a[k] * y;
                    round_to_state<width, State>(s[k - 1][p]);
                }
                s[state_n - 1][p] = x * b[state_n] - y * a[state_n];
                round_to_state<width, State>(s[state_n - 1][p]);
            }
        }
        for (std::size_t k = 0; k < state_n; ++k) {
            for (std::size_t p = 0; p < pack_n; ++p) {
                store_rounded<width>(&z[k][first + p * width], s[k][p]);
            }
        }
    }
}

template <std::size_t width, std::size_t pack_n, class Out, class In, class State,
          std::size_t state_n>
[[gnu::always_inline]] inline void run(Out* dst, const In* src, std::size_t row_n,
                                       std::ptrdiff_t stride, bool reverse, const double* b,
                                       const double* a, LaneStates<State, state_n>& z) {
    alignas(64) Rows<In> in;
    alignas(64) Rows<Out> out;
    const auto n = static_cast<std::ptrdiff_t>(row_n);
    fetch_rows(in, src, n, stride, reverse);
    filter_rows<width, pack_n, Out, In, State, state_n>(
        out, in, row_n, b, a, z, Ahead(src, stride, reverse), Ahead(dst, stride, reverse));
    store_rows(dst, n, stride, out, reverse);
}

template <class Out, class In, class State, std::size_t state_n>
struct Levels {
    static void baseline(Out* dst, const In* src, std::size_t row_n, std::ptrdiff_t stride,
                         bool reverse, const double* b, const double* a,
                         LaneStates<State, state_n>& z) {
        run<2, 4>(dst, src, row_n, stride, reverse, b, a, z);
    }

    [[gnu::target("avx2")]] static void avx2(Out* dst, const In* src, std::size_t row_n,
                                             std::ptrdiff_t stride, bool reverse, const double* b,
                                             const double* a, LaneStates<State, state_n>& z) {
        run<4, 4>(dst, src, row_n, stride, reverse, b, a, z);
    }

    [[gnu::target("avx512f,avx512bw,avx512dq,avx512vl")]] static void avx512(
        Out* dst, const In* src, std::size_t row_n, std::ptrdiff_t stride, bool reverse,
        const double* b, const double* a, LaneStates<State, state_n>& z) {
        run<8, 4>(dst, src, row_n, stride, reverse, b, a, z);
    }

    static constexpr std::array<decltype(&baseline), all_cpu_levels.size()> table = {baseline, avx2,
                                                                                     avx512};
};

}  // namespace

template <class Out, class In, class State, std::size_t state_n>
void filter_lane_rows(Out* dst, const In* src, std::size_t row_n, std::ptrdiff_t stride,
                      bool reverse, const double* b, const double* a, LaneStates<State, state_n>& z,
                      CpuLevel level) {
    Levels<Out, In, State, state_n>::table[static_cast<std::size_t>(level)](dst, src, row_n, stride,
                                                                            reverse, b, a, z);
}

#define INSTANTIATE(Out, In, State)                                                                \
    template void filter_lane_rows(Out*, const In*, std::size_t, std::ptrdiff_t, bool,             \
                                   const double*, const double*, LaneStates<State, 1>&, CpuLevel); \
    template void filter_lane_rows(Out*, const In*, std::size_t, std::ptrdiff_t, bool,             \
                                   const double*, const double*, LaneStates<State, 2>&, CpuLevel);
INSTANTIATE(float, float, float)
INSTANTIATE(double, float, double)
INSTANTIATE(double, double, double)
INSTANTIATE(float, double, double)
#undef INSTANTIATE

}  // namespace sorvo::audio
