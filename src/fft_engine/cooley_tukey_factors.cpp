#include "fft_engine/cooley_tukey_factors.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "fft_engine/kernels.h"
#include "fft_engine/primes.h"
#include "util/exceptions.h"

namespace sorvo::audio::kelpon::fft {
namespace {

/// The stages for one group of n rows: twos join into eights and fours, the largest radix comes
/// first (the first stage of all needs no twiddles).
std::vector<CooleyTukeyFactor> make_stages(unsigned n) {
    std::vector<unsigned> radices;
    unsigned two_n = 0;
    for (const unsigned prime : prime_factors(n)) {
        if (prime == 2) {
            ++two_n;
        } else {
            radices.push_back(prime);
        }
    }
    while (two_n > 0) {
        const unsigned joined = two_n == 1 ? 1 : (two_n == 2 || two_n == 4) ? 2 : 3;
        radices.push_back(1U << joined);
        two_n -= joined;
    }
    std::sort(radices.rbegin(), radices.rend());

    std::vector<CooleyTukeyFactor> stages;
    unsigned span = 1;
    for (const unsigned radix : radices) {
        stages.push_back({radix, span});
        span *= radix;
    }
    return stages;
}

/// Rough cost of the stages for one value, with what it takes to move the value in and out.
std::uint64_t cost_per_value(const std::vector<CooleyTukeyFactor>& stages) {
    std::uint64_t cost = 6;
    for (const CooleyTukeyFactor& stage : stages) {
        cost += stage.radix <= max_butterfly_radix ? 2 + stage.radix / 2
                                                   : std::min(stage.radix, max_direct_radix);
    }
    return cost;
}

}  // namespace

CooleyTukeyFactors choose_factors(unsigned n) {
    if (n == 0) throw SorvoInvalidArgument("Invalid n size.");
    CooleyTukeyFactors best{};
    std::uint64_t best_cost = 0;
    const auto consider = [&](unsigned column_n) {
        const unsigned row_n = n / column_n;
        CooleyTukeyFactors factors{column_n, row_n, make_stages(column_n), make_stages(row_n)};
        const std::uint64_t cost =
            round_up_to_lanes(row_n) * column_n * cost_per_value(factors.columns) +
            round_up_to_lanes(column_n) * row_n * cost_per_value(factors.rows);
        if (best.column_n == 0 || cost < best_cost) {
            best = std::move(factors);
            best_cost = cost;
        }
    };
    unsigned root = 1;
    while (std::uint64_t{root + 1} * (root + 1) <= n) ++root;
    // From the most even division outwards: of equal costs the one with the shorter passes is kept.
    for (unsigned divisor = root; divisor >= 1; --divisor) {
        if (n % divisor != 0) continue;
        consider(n / divisor);
        consider(divisor);
    }
    return best;
}

std::vector<unsigned> CooleyTukeyIndex(const std::vector<CooleyTukeyFactor>& factors) {
    unsigned stride = 1;
    for (const CooleyTukeyFactor& factor : factors) stride *= factor.radix;
    // The first stage takes inputs that lie furthest apart, the last one splits by residue.
    std::vector<unsigned> index(1, 0);
    for (const CooleyTukeyFactor& factor : factors) {
        stride /= factor.radix;
        const std::size_t shorter_n = index.size();
        for (unsigned residue = 1; residue < factor.radix; ++residue) {
            for (std::size_t i = 0; i < shorter_n; ++i)
                index.push_back(index[i] + residue * stride);
        }
    }
    return index;
}

}  // namespace sorvo::audio::kelpon::fft
