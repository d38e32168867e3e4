#include "resample/resample_filter_table.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <utility>

#include "util/zeros.h"

namespace sorvo::audio {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double two_pi = 6.283185307179586;
constexpr double four_pi = 12.566370614359172;

struct Ratio {
    int up;
    int down;
};

Ratio reduced(int dst_sample_rate, int src_sample_rate) {
    const int divisor = std::gcd(dst_sample_rate, src_sample_rate);
    return {dst_sample_rate / divisor, src_sample_rate / divisor};
}

/// Fails at once where the taps of `up` phases cannot be had. Without this a ratio of two large
/// coprime rates would fill the machine's memory phase by phase before the first refusal.
void require_memory(std::uint64_t up) {
    constexpr std::uint64_t phase_bytes =
        sizeof(std::vector<double>) + 2 * sizeof(int) + sizeof(TapGroups::Group) +
        std::size_t{2} * ResampleFilterTable::tap_n * sizeof(double);
    ::operator delete(::operator new(up* phase_bytes));
}

/// Windowed sinc of cut-off fc (a fraction of the source's Nyquist frequency) at distance t, in
/// source samples, from the interpolation point. The Blackman window follows the point.
double tap(double t, double fc) {
    const double window = 0.42 + 0.5 * ::cos(t * two_pi / 65.0) + 0.08 * ::cos(t * four_pi / 65.0);
    const double kernel =
        ::fabs(t) <= std::numeric_limits<double>::epsilon() ? fc : ::sin(fc * (pi * t)) / (pi * t);
    return window * kernel;
}

std::vector<std::vector<double>> design(const Ratio& ratio) {
    const auto up = static_cast<std::size_t>(ratio.up);
    require_memory(up);
    auto coef = make_zeros<std::vector<double>>(up);
    for (std::vector<double>& phase : coef) {
        phase = make_zeros<double>(ResampleFilterTable::tap_n);
    }
    const double fc = ratio.up > ratio.down
                          ? 1.0
                          : static_cast<double>(ratio.up) / static_cast<double>(ratio.down);
    const double centre = static_cast<double>(ratio.up - 1) * 0.5;
    for (std::size_t p = 0; p < up; ++p) {
        const double offset = (static_cast<double>(p) - centre) / static_cast<double>(ratio.up);
        for (int k = 0; k < ResampleFilterTable::tap_n; ++k) {
            coef[p][static_cast<std::size_t>(k)] = tap(static_cast<double>(k - 32) + offset, fc);
        }
    }
    return coef;
}

}  // namespace

ResampleFilterTable& ResampleFilterTable::instance() {
    static ResampleFilterTable table;
    return table;
}

std::optional<unsigned> ResampleFilterTable::find(int up, int down) const {
    const auto range = down_index_.equal_range(down);
    for (auto entry = range.first; entry != range.second; ++entry) {
        if (up_.find(entry->second)->second == up) {
            return entry->second;
        }
    }
    return std::nullopt;
}

unsigned ResampleFilterTable::init_filter(int dst_sample_rate, int src_sample_rate) {
    const Ratio ratio = reduced(dst_sample_rate, src_sample_rate);
    if (const auto index = find(ratio.up, ratio.down)) {
        return *index;
    }
    // Everything that can fail happens on maps of this call; merging them moves nodes and cannot
    // fail.
    const unsigned index = next_index_;
    std::map<unsigned, std::vector<std::vector<double>>> coef;
    coef.emplace(index, design(ratio));
    std::map<unsigned, std::vector<int>> diff;
    std::map<unsigned, std::vector<int>> kiro;
    std::vector<int>& advances =
        diff.emplace(index, make_zeros<int>(static_cast<std::uint64_t>(ratio.up))).first->second;
    std::vector<int>& phases =
        kiro.emplace(index, make_zeros<int>(static_cast<std::uint64_t>(ratio.up))).first->second;
    std::int64_t phase = (ratio.up - 1) / 2;
    for (std::size_t i = 0; i < phases.size(); ++i) {
        phases[i] = static_cast<int>(phase);
        advances[i] = static_cast<int>((phase + ratio.down) / ratio.up);
        phase = (phase + ratio.down) % ratio.up;
    }
    std::map<unsigned, TapGroups> groups;
    groups.emplace(index, TapGroups(coef.find(index)->second, phases, advances));
    std::map<unsigned, int> up{{index, ratio.up}};
    std::multimap<int, unsigned> down_index{{ratio.down, index}};

    coef_.merge(coef);
    diff_.merge(diff);
    kiro_.merge(kiro);
    groups_.merge(groups);
    up_.merge(up);
    down_index_.merge(down_index);
    ++next_index_;
    return index;
}

unsigned ResampleFilterTable::detect_idx(int dst_sample_rate, int src_sample_rate) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const Ratio ratio = reduced(dst_sample_rate, src_sample_rate);
    return find(ratio.up, ratio.down).value_or(0);
}

const std::vector<std::vector<double>>& ResampleFilterTable::ref_coef(int dst_sample_rate,
                                                                      int src_sample_rate) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return coef_.find(init_filter(dst_sample_rate, src_sample_rate))->second;
}

const std::vector<int>& ResampleFilterTable::ref_diff(int dst_sample_rate, int src_sample_rate) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return diff_.find(init_filter(dst_sample_rate, src_sample_rate))->second;
}

const std::vector<int>& ResampleFilterTable::ref_kiro(int dst_sample_rate, int src_sample_rate) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return kiro_.find(init_filter(dst_sample_rate, src_sample_rate))->second;
}

const TapGroups& ResampleFilterTable::ref_groups(int dst_sample_rate, int src_sample_rate) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return groups_.find(init_filter(dst_sample_rate, src_sample_rate))->second;
}

}  // namespace sorvo::audio
