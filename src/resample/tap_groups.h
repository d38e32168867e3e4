#pragma once

#include <cstddef>
#include <vector>

namespace sorvo::audio {

/// The taps of one ratio as the lane kernels read them: in the order of the signal, and with the
/// taps of up to four successive outputs side by side, so that each sample is fetched once for all
/// of them. A row without a tap for one of the outputs holds a zero there.
struct TapGroups {
    static constexpr std::size_t max_output_n = 4;

    struct Group {
        std::size_t output_n;
        std::size_t offset[max_output_n];  // first row of each output
        std::size_t row_n;                 // samples that the outputs read
        std::size_t advance;               // samples to the next group's first
        std::size_t taps;                  // index of the first tap
    };

    /// From the taps of each phase, and the phase and the advance of each slot of the schedule.
    TapGroups(const std::vector<std::vector<double>>& coef, const std::vector<int>& kiro,
              const std::vector<int>& diff);

    /// The groups come back to the first slot after this many outputs and samples.
    std::size_t output_n = 0;
    std::size_t advance = 0;
    std::vector<Group> groups;
    std::vector<double> taps;  // [group][row][output]
};

}  // namespace sorvo::audio
