#include "resample/tap_groups.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// Outputs further apart than this are taken one by one: the rows that only one of four uses would
/// cost more than sharing the others saves.
constexpr int max_advance = 15;

/// A short schedule is walked several times to fill the last group, though the taps then take up to
/// four times the memory. Of a longer one the last group is left small, for at most 5 % of the
/// time.
constexpr std::size_t short_schedule_n = 8;

}  // namespace

TapGroups::TapGroups(const std::vector<std::vector<double>>& coef, const std::vector<int>& kiro,
                     const std::vector<int>& diff) {
    const std::size_t tap_n = coef.front().size();
    const std::size_t slot_n = kiro.size();
    const bool close = *std::max_element(diff.begin(), diff.end()) <= max_advance;
    const std::size_t group_output_n = close ? max_output_n : 1;
    output_n = slot_n < short_schedule_n ? std::lcm(slot_n, group_output_n) : slot_n;

    groups = make_zeros<Group>((output_n + group_output_n - 1) / group_output_n);
    std::size_t tap_total = 0;
    std::size_t output = 0;
    for (Group& group : groups) {
        group.output_n = std::min(group_output_n, output_n - output);
        for (std::size_t o = 0; o < group.output_n; ++o, ++output) {
            group.offset[o] = group.advance;
            group.row_n = group.advance + tap_n;
            group.advance += static_cast<std::size_t>(diff[output % slot_n]);
        }
        group.taps = tap_total;
        tap_total += group.row_n * group.output_n;
        advance += group.advance;
    }

    taps = make_zeros<double>(tap_total);
    output = 0;
    for (const Group& group : groups) {
        for (std::size_t o = 0; o < group.output_n; ++o, ++output) {
            const auto phase = static_cast<std::size_t>(kiro[output % slot_n]);
            double* const first = &taps[group.taps + group.offset[o] * group.output_n + o];
            for (std::size_t k = 0; k < tap_n; ++k) {
                first[k * group.output_n] = coef[phase][tap_n - 1 - k];
            }
        }
    }
}

}  // namespace sorvo::audio
