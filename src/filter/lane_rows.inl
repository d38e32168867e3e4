// The difference equation of a recursive filter for all lanes at once.
#pragma once

#include "simd/prefetch.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

static_assert(max_filter_row_n == filter_lane_n, "one lane is prefetched per row");

template <class T>
using Rows = T[max_filter_row_n][filter_lane_n];

/// Brings the samples of all lanes row by row, in the order in which the filter takes them.
template <class T>
SORVO_INLINE void fetch_rows(Rows<T>& rows, const T* src, std::size_t row_n, std::ptrdiff_t stride,
                             bool reverse) {
    constexpr auto n = static_cast<std::ptrdiff_t>(square_n<T>);
    static_assert(filter_row_unit % square_n<T> == 0);
    T* const first_row = reverse ? rows[row_n - 1] : rows[0];
    const std::ptrdiff_t row_step = static_cast<std::ptrdiff_t>(filter_lane_n) * (reverse ? -1 : 1);
    for (std::ptrdiff_t l = 0; l < static_cast<std::ptrdiff_t>(filter_lane_n); l += n) {
        for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(row_n); i += n) {
            transpose_square(first_row + i * row_step + l, row_step, src + l * stride + i, stride);
        }
    }
}

template <class T>
SORVO_INLINE void store_rows(T* dst, const Rows<T>& rows, std::size_t row_n, std::ptrdiff_t stride,
                             bool reverse) {
    constexpr auto n = static_cast<std::ptrdiff_t>(square_n<T>);
    const T* const first_row = reverse ? rows[row_n - 1] : rows[0];
    const std::ptrdiff_t row_step = static_cast<std::ptrdiff_t>(filter_lane_n) * (reverse ? -1 : 1);
    for (std::ptrdiff_t l = 0; l < static_cast<std::ptrdiff_t>(filter_lane_n); l += n) {
        for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(row_n); i += n) {
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

    SORVO_INLINE void prefetch_lane(std::size_t lane) const {
        const std::uintptr_t lane_first = first + lane * static_cast<std::uintptr_t>(stride_bytes);
        for (std::size_t i = 0; i < run_bytes; i += cache_line_n) {
            prefetch(lane_first + i);
        }
    }

    static constexpr std::ptrdiff_t distance = 2 * max_filter_row_n;
};

/// Some packs of lanes at a time: enough independent chains of operations, and few enough for the
/// registers. Meanwhile the samples after the next ones are asked for, lane by lane: so many
/// streams in short runs are more than the processor foresees, and asking for all at once would
/// make it wait.
template <std::size_t state_n, class Out, class In, class State>
SORVO_INLINE void filter_rows(Rows<Out>& out, const Rows<In>& in, std::size_t row_n,
                              const double* b, const double* a, State* z, const Ahead& next_in,
                              const Ahead& next_out) {
    constexpr std::size_t pack_n = 4;
    for (std::size_t first = 0; first < filter_lane_n; first += pack_n * double_lane_n) {
        DoubleVec s[state_n][pack_n];
        for (std::size_t k = 0; k < state_n; ++k) {
            for (std::size_t p = 0; p < pack_n; ++p) {
                s[k][p] = load_wide(z + k * filter_lane_n + first + p * double_lane_n);
            }
        }
        for (std::size_t row = 0; row < row_n; ++row) {
            if (row >= first && row < first + pack_n * double_lane_n) {
                next_in.prefetch_lane(row);
                next_out.prefetch_lane(row);
            }
            for (std::size_t p = 0; p < pack_n; ++p) {
                const std::size_t lane = first + p * double_lane_n;
                const DoubleVec x = load_wide(&in[row][lane]);
                const DoubleVec y = s[0][p] + b[0] * x;
                store_rounded(&out[row][lane], y);
                for (std::size_t k = 1; k < state_n; ++k) {
                    s[k - 1][p] = rounded_to<State>(b[k] * x + s[k][p] - a[k] * y);
                }
                s[state_n - 1][p] = rounded_to<State>(x * b[state_n] - y * a[state_n]);
            }
        }
        for (std::size_t k = 0; k < state_n; ++k) {
            for (std::size_t p = 0; p < pack_n; ++p) {
                store_rounded(z + k * filter_lane_n + first + p * double_lane_n, s[k][p]);
            }
        }
    }
}

template <std::size_t state_n, class Out, class In, class State>
void run_rows(Out* dst, const In* src, std::size_t row_n, std::ptrdiff_t stride, bool reverse,
              const double* b, const double* a, State* z) {
    alignas(64) Rows<In> in;
    alignas(64) Rows<Out> out;
    fetch_rows(in, src, row_n, stride, reverse);
    filter_rows<state_n>(out, in, row_n, b, a, z, Ahead(src, stride, reverse),
                         Ahead(dst, stride, reverse));
    store_rows(dst, out, row_n, stride, reverse);
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
