#include "filter/chunk_kernels.h"

#include "simd/prefetch.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

static_assert(max_chunk_row_n == chunk_lane_n, "one lane is prefetched per row");

constexpr auto lane_count = static_cast<std::ptrdiff_t>(chunk_lane_n);

/// The row of the first sample in memory, and the distance to that of the next: rows are in the
/// order in which the filter takes them.
template <class Row>
SORVO_INLINE auto* first_row(Row* rows, std::size_t row_n, bool reverse) {
    return (reverse ? rows + row_n - 1 : rows)->lane;
}

constexpr std::ptrdiff_t row_step(bool reverse) {
    return reverse ? -lane_count : lane_count;
}

/// Calls visit(lane, row) for the first of each square.
template <class T, class Visitor>
SORVO_INLINE void for_each_square(std::size_t row_n, Visitor visit) {
    constexpr auto n = static_cast<std::ptrdiff_t>(square_n<T>);
    static_assert(chunk_row_unit % square_n<T> == 0);
    for (std::ptrdiff_t l = 0; l < lane_count; l += n) {
        for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(row_n); i += n) {
            visit(l, i);
        }
    }
}

template <class T>
SORVO_INLINE void fetch_rows(LaneRow<T>* rows, const T* src, std::size_t row_n,
                             std::ptrdiff_t stride, bool reverse) {
    T* const row = first_row(rows, row_n, reverse);
    const std::ptrdiff_t step = row_step(reverse);
    for_each_square<T>(row_n, [&](std::ptrdiff_t l, std::ptrdiff_t i) SORVO_INLINE_BODY {
        transpose_square(row + i * step + l, step, src + l * stride + i, stride);
    });
}

template <class T>
SORVO_INLINE void store_rows(T* dst, const LaneRow<T>* rows, std::size_t row_n,
                             std::ptrdiff_t stride, bool reverse) {
    const T* const row = first_row(rows, row_n, reverse);
    const std::ptrdiff_t step = row_step(reverse);
    for_each_square<T>(row_n, [&](std::ptrdiff_t l, std::ptrdiff_t i) SORVO_INLINE_BODY {
        transpose_square(dst + l * stride + i, stride, row + i * step + l, step);
    });
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
          run_bytes(max_chunk_row_n * sizeof(T)) {}

    SORVO_INLINE void prefetch_lane(std::size_t lane) const {
        const std::uintptr_t lane_first = first + lane * static_cast<std::uintptr_t>(stride_bytes);
        for (std::size_t i = 0; i < run_bytes; i += cache_line_n) {
            prefetch(lane_first + i);
        }
    }

    static constexpr std::ptrdiff_t distance = 2 * max_chunk_row_n;
};

/// Some vectors of lanes at a time: enough independent chains of operations, and few enough for the
/// registers. Meanwhile the samples after the next ones are asked for, lane by lane: so many
/// streams in short runs are more than the processor foresees, and asking for all at once would
/// make it wait.
template <std::size_t state_n, class Out, class In, class State>
SORVO_INLINE void filter_rows(const ChunkRows<Out, In, State> rows) {
    constexpr std::size_t vector_n = 4;
    const Ahead next_in(rows.src, rows.stride, rows.reverse);
    const Ahead next_out(rows.dst, rows.stride, rows.reverse);
    double b[state_n + 1];
    double a[state_n + 1];
    for (std::size_t k = 0; k <= state_n; ++k) {
        b[k] = rows.b[k];
        a[k] = rows.a[k];
    }
    for (std::size_t first = 0; first < chunk_lane_n; first += vector_n * double_lane_n) {
        DoubleVec z[state_n][vector_n];
        for (std::size_t k = 0; k < state_n; ++k) {
            for (std::size_t v = 0; v < vector_n; ++v) {
                z[k][v] = load_wide(rows.z + k * chunk_lane_n + first + v * double_lane_n);
            }
        }
        for (std::size_t row = 0; row < rows.row_n; ++row) {
            if (row >= first && row < first + vector_n * double_lane_n) {
                next_in.prefetch_lane(row);
                next_out.prefetch_lane(row);
            }
            for (std::size_t v = 0; v < vector_n; ++v) {
                const std::size_t lane = first + v * double_lane_n;
                const DoubleVec x = load_wide(rows.in_rows[row].lane + lane);
                const DoubleVec y = z[0][v] + b[0] * x;
                store_rounded(rows.out_rows[row].lane + lane, y);
                for (std::size_t k = 1; k < state_n; ++k) {
                    z[k - 1][v] = rounded_to<State>(b[k] * x + z[k][v] - a[k] * y);
                }
                z[state_n - 1][v] = rounded_to<State>(x * b[state_n] - y * a[state_n]);
            }
        }
        for (std::size_t k = 0; k < state_n; ++k) {
            for (std::size_t v = 0; v < vector_n; ++v) {
                store_rounded(rows.z + k * chunk_lane_n + first + v * double_lane_n, z[k][v]);
            }
        }
    }
}

template <std::size_t state_n, class Out, class In, class State>
void run_rows(const ChunkRows<Out, In, State>& all) {
    // A copy: what is stored could otherwise have changed it.
    const ChunkRows<Out, In, State> rows = all;
    fetch_rows(rows.in_rows, rows.src, rows.row_n, rows.stride, rows.reverse);
    for (std::size_t lane = 0; rows.is_idle != nullptr && lane < chunk_lane_n; ++lane) {
        for (std::size_t row = 0; rows.is_idle[lane] && row < rows.row_n; ++row) {
            rows.in_rows[row].lane[lane] = 0;
        }
    }
    filter_rows<state_n>(rows);
    store_rows(rows.dst, rows.out_rows, rows.row_n, rows.stride, rows.reverse);
}

template <class Out, class In, class State>
constexpr ChunkKernelsOf<Out, In, State> make_kernels() {
    return {{run_rows<1, Out, In, State>, run_rows<2, Out, In, State>}};
}

}  // namespace

const ChunkKernels chunk_kernels = {
    make_kernels<float, float, float>(), make_kernels<double, float, double>(),
    make_kernels<double, double, double>(), make_kernels<float, double, double>()};

}  // namespace sorvo::audio::SORVO_LEVEL
