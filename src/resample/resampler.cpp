#include "resample/resampler.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

#include "resample/lane_resampler.h"
#include "resample/resample_filter_table.h"
#include "util/float_to_int.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

constexpr std::size_t tap_n = ResampleFilterTable::tap_n;
constexpr std::size_t margin = tap_n / 2;
/// Fewer outputs are done before the lanes are set up.
constexpr std::size_t min_lane_output_n = 256;

double output_length(int dst_sample_rate, int src_sample_n, int src_sample_rate) {
    return ::ceil(static_cast<double>(dst_sample_rate) / static_cast<double>(src_sample_rate) *
                  static_cast<double>(src_sample_n));
}

/// The taps are applied in reverse against the signal, all in double, in the order of the signal.
double interpolate(const float* x, const std::vector<double>& taps) {
    double sum = 0.0;
    for (std::size_t k = 0; k < tap_n; ++k) {
        sum += static_cast<double>(x[k]) * taps[tap_n - 1 - k];
    }
    return sum;
}

/// How many of dst_n outputs lie before the last input sample.
std::size_t reachable_n(std::int64_t up, std::int64_t down, std::int64_t dst_n,
                        std::int64_t src_n) {
    const std::int64_t end = (src_n - 1) * up - (up - 1) / 2;
    return end > 0 ? static_cast<std::size_t>(std::min((end - 1) / down + 1, dst_n)) : 0;
}

}  // namespace

int get_resample_len(int dst_sample_rate, int src_sample_n, int src_sample_rate) {
    return length_to_int(output_length(dst_sample_rate, src_sample_n, src_sample_rate));
}

void resample_plain(float* dst, const float* src, int dst_sample_rate, int dst_n,
                    int src_sample_rate, int src_n) {
    ResampleFilterTable& table = ResampleFilterTable::instance();
    const auto& coef = table.ref_coef(dst_sample_rate, src_sample_rate);
    const auto& diff = table.ref_diff(dst_sample_rate, src_sample_rate);
    const auto& kiro = table.ref_kiro(dst_sample_rate, src_sample_rate);

    auto buffer = make_zeros<float>(static_cast<std::uint64_t>(src_n) + 2 * margin);
    std::copy_n(src, src_n, buffer.begin() + margin);

    const auto limit = static_cast<std::size_t>(std::min(
        output_length(dst_sample_rate, src_n, src_sample_rate), static_cast<double>(dst_n)));
    std::size_t pos = 0;
    std::size_t slot = 0;
    std::size_t i = 0;
    for (; i < limit && pos + tap_n < buffer.size(); ++i) {
        dst[i] = static_cast<float>(
            interpolate(buffer.data() + pos, coef[static_cast<std::size_t>(kiro[slot])]));
        pos += static_cast<std::size_t>(diff[slot]);
        slot = slot + 1 < kiro.size() ? slot + 1 : 0;
    }
    std::fill(dst + i, dst + dst_n, 0.0F);
}

void resample(float* dst, const float* src, int dst_sample_rate, int dst_n, int src_sample_rate,
              int src_n, SimdLevel level) {
    const TapGroups& table =
        ResampleFilterTable::instance().ref_groups(dst_sample_rate, src_sample_rate);
    const int divisor = std::gcd(dst_sample_rate, src_sample_rate);
    const std::size_t n =
        reachable_n(dst_sample_rate / divisor, src_sample_rate / divisor, dst_n, src_n);
    if (n < std::max(2 * table.output_n, min_lane_output_n)) {
        resample_plain(dst, src, dst_sample_rate, dst_n, src_sample_rate, src_n);
        return;
    }
    resample_lanes(dst, src, n, static_cast<std::size_t>(src_n), table, level);
    std::fill(dst + n, dst + dst_n, 0.0F);
}

}  // namespace sorvo::audio
