#include "resample/lane_kernels.h"

#include <array>
#include <cstdint>

#include "resample/resample_filter_table.h"
#include "util/vectors.h"

namespace sorvo::audio {
namespace {

constexpr std::size_t tap_n = ResampleFilterTable::tap_n;
constexpr auto row_stride = static_cast<std::ptrdiff_t>(resample_lane_n);

/// Moves the samples of the new rows to their places. Returns whether all are finite.
[[gnu::always_inline]] inline bool fetch_rows(const LaneBlock& block) {
    const auto stride = static_cast<std::ptrdiff_t>(block.sample_stride);
    for (std::size_t l = 0; l < resample_lane_n; l += lane_square_n) {
        const float* const from = block.samples + l * block.sample_stride;
        for (std::size_t i = 0; i < block.new_row_n; i += lane_square_n) {
            transpose_square(block.scratch[i].lane + l, row_stride, from + i, stride);
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

[[gnu::always_inline]] inline void prefetch_lanes(const float* first, std::size_t stride,
                                                  std::size_t offset) {
    for (std::size_t l = 0; l < resample_lane_n; ++l) {
        prefetch(reinterpret_cast<std::uintptr_t>(first) + (l * stride + offset) * sizeof(float));
    }
}

/// Asks for line `i` of what each lane will read and write next, as far as it is about as long as
/// what it reads and writes now.
[[gnu::always_inline]] inline void prefetch_line(const LaneBlock& block, std::size_t i) {
    const std::size_t offset = i * cache_line_n / sizeof(float);
    if (offset < block.new_row_n) {
        prefetch_lanes(block.next_samples, block.next_sample_stride, offset);
    }
    if (offset < block.output_n) {
        prefetch_lanes(block.next_results, block.next_result_stride, offset);
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
    const auto stride = static_cast<std::ptrdiff_t>(block.result_stride);
    for (std::size_t l = 0; l < resample_lane_n; l += lane_square_n) {
        float* const to = block.results + l * block.result_stride;
        for (std::size_t i = 0; i < block.output_n; i += lane_square_n) {
            transpose_square(to + i, stride, block.scratch[i].lane + l, row_stride);
        }
    }
}

void run_baseline(LaneBlock& block) {
    run<Vectors<2>::Doubles>(block);
}

[[gnu::target("avx2")]] void run_avx2(LaneBlock& block) {
    run<Vectors<4>::Doubles>(block);
}

[[gnu::target("avx512f,avx512bw,avx512dq,avx512vl")]] void run_avx512(LaneBlock& block) {
    run<Vectors<8>::Doubles>(block);
}

constexpr std::array<decltype(&run_baseline), all_cpu_levels.size()> run_by_level = {
    run_baseline, run_avx2, run_avx512};

}  // namespace

void run_lanes(LaneBlock& block, CpuLevel level) {
    run_by_level[static_cast<std::size_t>(level)](block);
}

}  // namespace sorvo::audio
