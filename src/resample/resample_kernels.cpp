#include "resample/resample_kernels.h"

#include "simd/prefetch.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

static_assert(lane_square_n % square_n<float> == 0);
constexpr auto row_stride = static_cast<std::ptrdiff_t>(resample_lane_n);

/// Moves the samples of the new rows to their places. Returns whether all are finite.
SORVO_INLINE bool fetch_rows(const LaneBlock& block) {
    const auto stride = static_cast<std::ptrdiff_t>(block.sample_stride);
    for (std::size_t l = 0; l < resample_lane_n; l += square_n<float>) {
        const float* const from = block.samples + l * block.sample_stride;
        for (std::size_t i = 0; i < block.new_row_n; i += square_n<float>) {
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

SORVO_INLINE void prefetch_lanes(const float* first, std::size_t stride, std::size_t offset) {
    for (std::size_t l = 0; l < resample_lane_n; ++l) {
        prefetch(reinterpret_cast<std::uintptr_t>(first) + (l * stride + offset) * sizeof(float));
    }
}

/// Asks for line `i` of what each lane will read and write next, as far as it is about as long as
/// what it reads and writes now.
SORVO_INLINE void prefetch_line(const LaneBlock& block, std::size_t i) {
    const std::size_t offset = i * cache_line_n / sizeof(float);
    if (offset < block.new_row_n) {
        prefetch_lanes(block.next_samples, block.next_sample_stride, offset);
    }
    if (offset < block.output_n) {
        prefetch_lanes(block.next_results, block.next_result_stride, offset);
    }
}

/// Sums of successive outputs for two vectors of lanes at a time. Four outputs make eight
/// independent chains of additions: enough to keep the adders busy, and few enough for the
/// registers.
template <std::size_t output_n>
SORVO_INLINE void sums(FloatRow* dst, const DoubleRow* rows, const double* taps,
                       std::size_t tap_stride, std::size_t row_n) {
    constexpr std::size_t vector_n = 2;
    for (std::size_t first = 0; first < resample_lane_n; first += vector_n * double_lane_n) {
        DoubleVec sum[output_n][vector_n] = {};
        for (std::size_t row = 0; row < row_n; ++row) {
            for (std::size_t v = 0; v < vector_n; ++v) {
                const DoubleVec x = load_wide(rows[row].lane + first + v * double_lane_n);
                for (std::size_t o = 0; o < output_n; ++o) {
                    sum[o][v] += x * taps[row * tap_stride + o];
                }
            }
        }
        for (std::size_t o = 0; o < output_n; ++o) {
            for (std::size_t v = 0; v < vector_n; ++v) {
                store_rounded(dst[o].lane + first + v * double_lane_n, sum[o][v]);
            }
        }
    }
}

SORVO_INLINE void group_sums(FloatRow* dst, const DoubleRow* rows, const double* taps,
                             const TapGroups::Group& group, bool finite) {
    // Rows without a tap for an output add zeros to it. That changes no sum of finite values, as
    // one that starts at +0 never becomes -0.
    if (group.output_n == 4 && finite) {
        sums<4>(dst, rows, taps, 4, group.row_n);
        return;
    }
    for (std::size_t o = 0; o < group.output_n; ++o) {
        const std::size_t offset = group.offset[o];
        sums<1>(dst + o, rows + offset, taps + offset * group.output_n + o, group.output_n,
                resample_tap_n);
    }
}

void run_lanes(LaneBlock& block) {
    block.new_finite = fetch_rows(block);
    const DoubleRow* rows = block.rows;
    FloatRow* dst = block.scratch;
    std::size_t g = block.first_group;
    for (std::size_t i = 0; i < block.group_n; ++i) {
        const TapGroups::Group& group = block.groups[g];
        group_sums(dst, rows, block.taps + group.taps, group, block.old_finite && block.new_finite);
        rows += group.advance;
        prefetch_line(block, i);
        dst += group.output_n;
        g = g + 1 < block.all_group_n ? g + 1 : 0;
    }
    const auto stride = static_cast<std::ptrdiff_t>(block.result_stride);
    for (std::size_t l = 0; l < resample_lane_n; l += square_n<float>) {
        float* const to = block.results + l * block.result_stride;
        for (std::size_t i = 0; i < block.output_n; i += square_n<float>) {
            transpose_square(to + i, stride, block.scratch[i].lane + l, row_stride);
        }
    }
}

}  // namespace

const ResampleKernels resample_kernels = {run_lanes};

}  // namespace sorvo::audio::SORVO_LEVEL
