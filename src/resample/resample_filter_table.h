#pragma once

#include <vector>

#include "resample/resample_kernels.h"
#include "resample/tap_groups.h"
#include "util/table_cache.h"

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
    /// In lowest terms.
    struct Ratio {
        Ratio(int dst_sample_rate, int src_sample_rate);
        bool operator<(const Ratio& other) const;

        int up;
        int down;
    };
    struct Filter {
        unsigned index;
        std::vector<std::vector<double>> coef;
        std::vector<int> diff;
        std::vector<int> kiro;
        TapGroups groups;
    };

    ResampleFilterTable() = default;
    const Filter& ref(int dst_sample_rate, int src_sample_rate);
    /// Designs the filter and gives it the next index. The lock of the cache is held.
    Filter init_filter(const Ratio& ratio);

    TableCache<Ratio, Filter> filters_{Cache::resample};
    unsigned next_index_ = 0;
};

}  // namespace sorvo::audio
