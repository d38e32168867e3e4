#include "resample/lane_resampler.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "resample/resample_filter_table.h"
#include "resample/resample_kernels.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

constexpr std::size_t margin = ResampleFilterTable::tap_n / 2;
constexpr std::size_t max_row_n = 192;
constexpr std::size_t max_output_n = 128;

std::size_t divide_rounding_up(std::size_t a, std::size_t b) {
    return (a + b - 1) / b;
}

/// n samples from `first` on of the signal with `margin` zeros before it and zeros after it.
void copy_padded(float* dst, const float* src, std::size_t src_n, std::size_t first,
                 std::size_t n) {
    const std::size_t begin = std::clamp(margin, first, first + n);
    const std::size_t end = std::clamp(margin + src_n, begin, first + n);
    std::fill_n(dst, begin - first, 0.0F);
    if (end > begin) {
        std::copy_n(src + (begin - margin), end - begin, dst + (begin - first));
    }
    std::fill_n(dst + (end - first), first + n - end, 0.0F);
}

/// The groups from `first` on that fit into the buffers and are needed for `wanted_n` outputs.
struct Plan {
    std::size_t group_n = 0;
    std::size_t output_n = 0;
    std::size_t row_n = 0;
    std::size_t advance = 0;
    std::size_t next_group = 0;
};

Plan plan_block(const TapGroups& table, std::size_t first, std::size_t wanted_n) {
    Plan plan;
    plan.next_group = first;
    while (plan.output_n < wanted_n) {
        const TapGroups::Group& group = table.groups[plan.next_group];
        if (plan.output_n + group.output_n > max_output_n ||
            plan.advance + group.row_n > max_row_n) {
            break;
        }
        ++plan.group_n;
        plan.output_n += group.output_n;
        plan.row_n = plan.advance + group.row_n;
        plan.advance += group.advance;
        plan.next_group = plan.next_group + 1 < table.groups.size() ? plan.next_group + 1 : 0;
    }
    return plan;
}

}  // namespace

void resample_lanes(float* dst, const float* src, std::size_t dst_n, std::size_t src_n,
                    const TapGroups& table, SimdLevel level) {
    // Each lane takes the same number of whole rounds of the schedule.
    const std::size_t rounds =
        divide_rounding_up(divide_rounding_up(dst_n, table.output_n), resample_lane_n);
    const std::size_t lane_dst_n = rounds * table.output_n;
    const std::size_t lane_advance = rounds * table.advance;

    auto rows = make_zeros<DoubleRow>(max_row_n + lane_square_n);
    auto scratch = make_zeros<FloatRow>(rows.size());
    auto samples = make_zeros<float>(resample_lane_n * rows.size());
    auto results = make_zeros<float>(resample_lane_n * max_output_n);
    const ResampleKernels& kernels = resample_kernels(level);
    LaneBlock block{};
    block.groups = table.groups.data();
    block.all_group_n = table.groups.size();
    block.taps = table.taps.data();
    block.samples = samples.data();
    block.sample_stride = rows.size();
    block.rows = rows.data();
    block.scratch = scratch.data();
    block.results = results.data();
    block.result_stride = max_output_n;
    block.next_sample_stride = lane_advance;
    block.next_result_stride = lane_dst_n;

    const std::size_t wanted_n = std::min(lane_dst_n, dst_n);
    std::size_t position = 0;       // of the first row in each lane's chunk
    std::size_t suspect_until = 0;  // rows before this position may hold what is not finite
    for (std::size_t done = 0; done < wanted_n;) {
        const Plan plan = plan_block(table, block.first_group, wanted_n - done);
        block.group_n = plan.group_n;
        block.output_n = plan.output_n;
        block.new_row_n =
            plan.row_n > block.old_row_n ? round_up_to_squares(plan.row_n - block.old_row_n) : 0;
        for (std::size_t lane = 0; lane < resample_lane_n; ++lane) {
            copy_padded(samples.data() + lane * block.sample_stride, src, src_n,
                        lane * lane_advance + position + block.old_row_n, block.new_row_n);
        }
        block.next_samples = src + std::min(position + block.old_row_n + block.new_row_n, src_n);
        block.next_results = dst + done;
        block.old_finite = suspect_until <= position;
        kernels.run_lanes(block);

        for (std::size_t lane = 0; lane < resample_lane_n; ++lane) {
            const std::size_t first = lane * lane_dst_n + done;
            if (first < dst_n) {
                std::copy_n(results.data() + lane * max_output_n,
                            std::min(plan.output_n, dst_n - first), dst + first);
            }
        }
        const std::size_t row_n = block.old_row_n + block.new_row_n;
        if (!block.new_finite) {
            suspect_until = position + row_n;
        }
        done += plan.output_n;
        position += plan.advance;
        block.first_group = plan.next_group;
        block.old_row_n = row_n > plan.advance ? row_n - plan.advance : 0;
        std::copy_n(rows.data() + (row_n - block.old_row_n), block.old_row_n, rows.data());
    }
}

}  // namespace sorvo::audio
