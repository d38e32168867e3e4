#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "resample/resample_kernels.h"
#include "resample/tap_groups.h"

namespace sorvo::audio {

/// Process-wide cache of polyphase interpolation filters for rational sample-rate conversion. A
/// ratio is reduced to up / down; its table holds `up` windowed-sinc filters of 65 taps, one per
/// fractional phase, and a schedule of `up` slots that the resampler walks output by output. A
/// table is built on its first request and never changed, moved or removed afterwards, so
/// references to its parts are read without a lock for the life of the process.
///
/// For even `up` every output falls 0.5 / up of an input sample early. That belongs to the design.
class ResampleFilterTable {
  public:
    static constexpr int tap_n = static_cast<int>(resample_tap_n);

    static ResampleFilterTable& instance();
    ResampleFilterTable(const ResampleFilterTable&) = delete;
    ResampleFilterTable& operator=(const ResampleFilterTable&) = delete;

    /// Taps [phase][tap]. Rates are positive; std::bad_alloc where the table cannot be had.
    const std::vector<std::vector<double>>& ref_coef(int dst_sample_rate, int src_sample_rate);
    /// Input advance after the output of each slot.
    const std::vector<int>& ref_diff(int dst_sample_rate, int src_sample_rate);
    /// Phase of each slot.
    const std::vector<int>& ref_kiro(int dst_sample_rate, int src_sample_rate);

    /// The taps once more, in the order in which the lane kernels read them.
    const TapGroups& ref_groups(int dst_sample_rate, int src_sample_rate);

    /// Index of the table of a ratio, in order of first use; 0 also where there is none.
    unsigned detect_idx(int dst_sample_rate, int src_sample_rate);

  private:
    ResampleFilterTable() = default;
    /// Builds the table unless it is there and returns its index; the mutex is held. A table
    /// becomes visible only when it is complete.
    unsigned init_filter(int dst_sample_rate, int src_sample_rate);
    std::optional<unsigned> find(int up, int down) const;

    std::multimap<int, unsigned> down_index_;
    std::map<unsigned, int> up_;
    std::map<unsigned, std::vector<std::vector<double>>> coef_;
    std::map<unsigned, std::vector<int>> diff_;
    std::map<unsigned, std::vector<int>> kiro_;
    std::map<unsigned, TapGroups> groups_;
    unsigned next_index_ = 0;
    std::mutex mutex_;
};

}  // namespace sorvo::audio
