#include "resample/lane_kernels.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "resample/resample_filter_table.h"

namespace sorvo::audio {
namespace {

constexpr std::size_t tap_n = ResampleFilterTable::tap_n;
constexpr std::size_t square_n = lane_square_n;

using Floats = float __attribute__((vector_size(square_n * sizeof(float))));

/// Vectors go by reference: the ways to pass them by value differ between levels.
template <class Vector, class T>
[[gnu::always_inline]] inline void load(Vector& v, const T* from) {
    std::memcpy(&v, from, sizeof v);
}

template <class Vector, class T>
[[gnu::always_inline]] inline void store(T* to, const Vector& v) {
    std::memcpy(to, &v, sizeof v);
}

/// dst[i * dst_stride + j] = src[j * src_stride + i] for square_n values of i and j.
[[gnu::always_inline]] inline void transpose_square(float* dst, std::size_t dst_stride,
                                                    const float* src, std::size_t src_stride) {
    Floats a[square_n];
    for (std::size_t i = 0; i < square_n; i += 2) {
        Floats x;
        Floats y;
        load(x, src + i * src_stride);
        load(y, src + (i + 1) * src_stride);
        a[i] = __builtin_shufflevector(x, y, 0, 8, 1, 9, 4, 12, 5, 13);
        a[i + 1] = __builtin_shufflevector(x, y, 2, 10, 3, 11, 6, 14, 7, 15);
    }
    Floats b[square_n];
    for (std::size_t i = 0; i < square_n; i += 4) {
        b[i] = __builtin_shufflevector(a[i], a[i + 2], 0, 1, 8, 9, 4, 5, 12, 13);
        b[i + 1] = __builtin_shufflevector(a[i], a[i + 2], 2, 3, 10, 11, 6, 7, 14, 15);
        b[i + 2] = __builtin_shufflevector(a[i + 1], a[i + 3], 0, 1, 8, 9, 4, 5, 12, 13);
        b[i + 3] = __builtin_shufflevector(a[i + 1], a[i + 3], 2, 3, 10, 11, 6, 7, 14, 15);
    }
    for (std::size_t i = 0; i < square_n / 2; ++i) {
        const Floats low = __builtin_shufflevector(b[i], b[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
        const Floats high = __builtin_shufflevector(b[i], b[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
        store(dst + i * dst_stride, low);
        store(dst + (i + square_n / 2) * dst_stride, high);
    }
}

/// Moves the samples of the new rows to their places. Returns whether all are finite.
[[gnu::always_inline]] inline bool fetch_rows(const LaneBlock& block) {
    for (std::size_t l = 0; l < resample_lane_n; l += square_n) {
        for (std::size_t i = 0; i < block.new_row_n; i += square_n) {
            transpose_square(block.scratch[i].lane + l, resample_lane_n,
                             block.samples + l * block.sample_stride + i, block.sample_stride);
        }
    }
    // The largest exponent plus one carries into the sign, for infinities and NaN alone.
    std::uint32_t carry = 0;
    const float* const from = block.scratch->lane;
    double* const to = block.rows[block.old_row_n].lane;
    for (std::size_t i = 0; i < block.new_row_n * resample_lane_n; ++i) {
        to[i] = static_cast<double>(from[i]);
        carry |= (__builtin_bit_cast(std::uint32_t, from[i]) & 0x7FFFFFFFU) + 0x00800000U;
    }
    return carry >> 31U == 0;
}

/// Asks for line `i` of what each lane will read and write next, as far as it is about as long as
/// what it reads and writes now. Addresses behind the last lane's end do no harm.
[[gnu::always_inline]] inline void prefetch_line(const LaneBlock& block, std::size_t i) {
    constexpr std::size_t line_n = 64 / sizeof(float);
    const auto prefetch = [i](const float* first, std::size_t stride) {
        for (std::size_t l = 0; l < resample_lane_n; ++l) {
            const auto address =
                reinterpret_cast<std::uintptr_t>(first) + (l * stride + i * line_n) * sizeof(float);
            __builtin_prefetch(reinterpret_cast<const void*>(address));
        }
    };
    if (i * line_n < block.new_row_n) {
        prefetch(block.next_samples, block.next_sample_stride);
    }
    if (i * line_n < block.output_n) {
        prefetch(block.next_results, block.next_result_stride);
    }
}

/// Sums of successive outputs for two packs of lanes at a time. Four outputs make eight independent
/// chains of additions: enough to keep the adders busy, and few enough for the registers.
template <class Pack, std::size_t output_n>
[[gnu::always_inline]] inline void sums(FloatRow* dst, const DoubleRow* rows, const double* taps,
                                        std::size_t tap_stride, std::size_t row_n) {
    constexpr std::size_t pack_n = 2;
    constexpr std::size_t width = sizeof(Pack) / sizeof(double);
    for (std::size_t first = 0; first < resample_lane_n; first += pack_n * width) {
        Pack sum[output_n][pack_n] = {};
        for (std::size_t row = 0; row < row_n; ++row) {
            for (std::size_t p = 0; p < pack_n; ++p) {
                Pack x;
                load(x, rows[row].lane + first + p * width);
                for (std::size_t o = 0; o < output_n; ++o) {
                    sum[o][p] += x * taps[row * tap_stride + o];
                }
            }
        }
        for (std::size_t o = 0; o < output_n; ++o) {
            for (std::size_t p = 0; p < pack_n; ++p) {
                for (std::size_t l = 0; l < width; ++l) {
                    dst[o].lane[first + p * width + l] = static_cast<float>(sum[o][p][l]);
                }
            }
        }
    }
}

template <class Pack>
[[gnu::always_inline]] inline void group_sums(FloatRow* dst, const DoubleRow* rows,
                                              const double* taps, const TapGroups::Group& group,
                                              bool finite) {
    // Rows without a tap for an output add zeros to it. That changes no sum of finite values, as
    // one that starts at +0 never becomes -0.
    if (group.output_n == 4 && finite) {
        sums<Pack, 4>(dst, rows, taps, 4, group.row_n);
        return;
    }
    for (std::size_t o = 0; o < group.output_n; ++o) {
        const std::size_t offset = group.offset[o];
        sums<Pack, 1>(dst + o, rows + offset, taps + offset * group.output_n + o, group.output_n,
                      tap_n);
    }
}

template <class Pack>
[[gnu::always_inline]] inline void run(LaneBlock& block) {
    block.new_finite = fetch_rows(block);
    const DoubleRow* rows = block.rows;
    FloatRow* dst = block.scratch;
    std::size_t g = block.first_group;
    for (std::size_t i = 0; i < block.group_n; ++i) {
        const TapGroups::Group& group = block.table->groups[g];
        group_sums<Pack>(dst, rows, &block.table->taps[group.taps], group,
                         block.old_finite && block.new_finite);
        rows += group.advance;
        prefetch_line(block, i);
        dst += group.output_n;
        g = g + 1 < block.table->groups.size() ? g + 1 : 0;
    }
    for (std::size_t l = 0; l < resample_lane_n; l += square_n) {
        for (std::size_t j = 0; j < block.output_n; j += square_n) {
            transpose_square(block.results + l * block.result_stride + j, block.result_stride,
                             block.scratch[j].lane + l, resample_lane_n);
        }
    }
}

using Pack2 = double __attribute__((vector_size(16)));
using Pack4 = double __attribute__((vector_size(32)));
using Pack8 = double __attribute__((vector_size(64)));

void run_baseline(LaneBlock& block) {
    run<Pack2>(block);
}

[[gnu::target("avx2")]] void run_avx2(LaneBlock& block) {
    run<Pack4>(block);
}

[[gnu::target("avx512f,avx512bw,avx512dq,avx512vl")]] void run_avx512(LaneBlock& block) {
    run<Pack8>(block);
}

constexpr std::array<decltype(&run_baseline), all_cpu_levels.size()> run_by_level = {
    run_baseline, run_avx2, run_avx512};

}  // namespace

void run_lanes(LaneBlock& block, CpuLevel level) {
    run_by_level[static_cast<std::size_t>(level)](block);
}

}  // namespace sorvo::audio
