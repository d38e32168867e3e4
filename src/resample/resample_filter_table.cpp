#include "resample/resample_filter_table.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <type_traits>
#include <utility>

#include "math/functions.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double two_pi = 6.283185307179586;
constexpr double four_pi = 12.566370614359172;

/// Fails at once where the taps of `up` phases cannot be had. Without this a ratio of two large
/// coprime rates would fill the machine's memory phase by phase before the first refusal.
void require_memory(std::uint64_t up) {
    constexpr std::uint64_t phase_bytes =
        sizeof(std::vector<double>) + 2 * sizeof(int) + sizeof(TapGroups::Group) +
        std::size_t{2} * ResampleFilterTable::tap_n * sizeof(double);
    if (up > std::numeric_limits<std::size_t>::max() / phase_bytes) {
        throw std::bad_alloc();
    }
    ::operator delete(::operator new(static_cast<std::size_t>(up * phase_bytes)));
}

/// Windowed sinc of cut-off fc (a fraction of the source's Nyquist frequency) at distance t, in
/// source samples, from the interpolation point. The Blackman window follows the point.
double tap(double t, double fc) {
    const double window =
        0.42 + 0.5 * math::cos(t * two_pi / 65.0) + 0.08 * math::cos(t * four_pi / 65.0);
    const double kernel = ::fabs(t) <= std::numeric_limits<double>::epsilon()
                              ? fc
                              : math::sin(fc * (pi * t)) / (pi * t);
    return window * kernel;
}

std::vector<std::vector<double>> design(int up_factor, int down_factor) {
    const auto up = static_cast<std::size_t>(up_factor);
    require_memory(up);
    auto coef = make_zeros<std::vector<double>>(up);
    for (std::vector<double>& phase : coef) {
        phase = make_zeros<double>(ResampleFilterTable::tap_n);
    }
    const double fc = up_factor > down_factor
                          ? 1.0
                          : static_cast<double>(up_factor) / static_cast<double>(down_factor);
    const double centre = static_cast<double>(up_factor - 1) * 0.5;
    for (std::size_t p = 0; p < up; ++p) {
        const double offset = (static_cast<double>(p) - centre) / static_cast<double>(up_factor);
        for (int k = 0; k < ResampleFilterTable::tap_n; ++k) {
            coef[p][static_cast<std::size_t>(k)] = tap(static_cast<double>(k - 32) + offset, fc);
        }
    }
    return coef;
}

}  // namespace

ResampleFilterTable::Ratio::Ratio(int dst_sample_rate, int src_sample_rate) {
    const int divisor = std::gcd(dst_sample_rate, src_sample_rate);
    up = dst_sample_rate / divisor;
    down = src_sample_rate / divisor;
}

bool ResampleFilterTable::Ratio::operator<(const Ratio& other) const {
    return down != other.down ? down < other.down : up < other.up;
}

ResampleFilterTable& ResampleFilterTable::instance() {
    static ResampleFilterTable table;
    static_assert(std::is_trivially_destructible_v<ResampleFilterTable>, "used during exit, too");
    return table;
}

ResampleFilterTable::Filter ResampleFilterTable::init_filter(const Ratio& ratio) {
    std::vector<std::vector<double>> coef = design(ratio.up, ratio.down);
    auto diff = make_zeros<int>(static_cast<std::uint64_t>(ratio.up));
    auto kiro = make_zeros<int>(static_cast<std::uint64_t>(ratio.up));
    std::int64_t phase = (ratio.up - 1) / 2;
    for (std::size_t i = 0; i < kiro.size(); ++i) {
        kiro[i] = static_cast<int>(phase);
        diff[i] = static_cast<int>((phase + ratio.down) / ratio.up);
        phase = (phase + ratio.down) % ratio.up;
    }
    TapGroups groups(coef, kiro, diff);
    return {next_index_++, std::move(coef), std::move(diff), std::move(kiro), std::move(groups)};
}

const ResampleFilterTable::Filter& ResampleFilterTable::ref(int dst_sample_rate,
                                                            int src_sample_rate) {
    const Ratio ratio(dst_sample_rate, src_sample_rate);
    return filters_.ref(ratio, [&] { return init_filter(ratio); });
}

unsigned ResampleFilterTable::detect_idx(int dst_sample_rate, int src_sample_rate) {
    const Filter* const filter = filters_.find(Ratio(dst_sample_rate, src_sample_rate));
    return filter != nullptr ? filter->index : 0;
}

const std::vector<std::vector<double>>& ResampleFilterTable::ref_coef(int dst_sample_rate,
                                                                      int src_sample_rate) {
    return ref(dst_sample_rate, src_sample_rate).coef;
}

const std::vector<int>& ResampleFilterTable::ref_diff(int dst_sample_rate, int src_sample_rate) {
    return ref(dst_sample_rate, src_sample_rate).diff;
}

const std::vector<int>& ResampleFilterTable::ref_kiro(int dst_sample_rate, int src_sample_rate) {
    return ref(dst_sample_rate, src_sample_rate).kiro;
}

const TapGroups& ResampleFilterTable::ref_groups(int dst_sample_rate, int src_sample_rate) {
    return ref(dst_sample_rate, src_sample_rate).groups;
}

}  // namespace sorvo::audio
