// Compares raise_to_power() with powf() for every float but the NaNs, exponents 0.5 and 1, at every
// level of the processor. Takes about a minute. Build and run from the repository's root:
//
//   g++ -std=c++17 -O3 -ffp-contract=off -fno-math-errno -fno-trapping-math -fno-builtin-powf -Isrc
//       bench/power_check.cpp build/release/src/libsorvo_audio.a -o power_check
//   ./power_check
//
// (the g++ call on one line). Without -fno-builtin-powf compilers turn powf(x, 0.5F) into sqrtf(x).
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "math/power.h"

using namespace sorvo::audio;

namespace {

constexpr std::uint64_t value_n = std::uint64_t{1} << 32;
constexpr std::size_t chunk_n = 1U << 16;

std::uint32_t bits_of(float x) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

/// The number of floats whose power differs, and how many of these powers are not the plain root.
std::uint64_t differences(float exponent) {
    std::vector<float> x(chunk_n);
    std::vector<float> expected(chunk_n);
    std::vector<float> got(chunk_n);
    std::uint64_t different_n = 0;
    std::uint64_t not_root_n = 0;
    for (std::uint64_t begin = 0; begin < value_n; begin += chunk_n) {
        for (std::size_t i = 0; i < chunk_n; ++i) {
            const auto bits = static_cast<std::uint32_t>(begin + i);
            std::memcpy(&x[i], &bits, sizeof bits);
            x[i] = std::isnan(x[i]) ? 0.0F : x[i];
            expected[i] = ::powf(x[i], exponent);
            not_root_n += bits_of(expected[i]) != bits_of(::sqrtf(x[i])) && x[i] > 0.0F ? 1U : 0U;
        }
        for (const SimdLevel level : all_simd_levels()) {
            if (!is_supported(level)) {
                continue;
            }
            raise_to_power(got.data(), x.data(), chunk_n, exponent, level);
            for (std::size_t i = 0; i < chunk_n; ++i) {
                const bool same = bits_of(got[i]) == bits_of(expected[i]) ||
                                  (std::isnan(got[i]) && std::isnan(expected[i]));
                different_n += same ? 0U : 1U;
            }
        }
    }
    std::printf("exponent %.1f: %llu differences; %llu powers are not sqrtf()\n",
                static_cast<double>(exponent), static_cast<unsigned long long>(different_n),
                static_cast<unsigned long long>(not_root_n));
    return different_n;
}

}  // namespace

int main() {
    return differences(0.5F) + differences(1.0F) == 0 ? 0 : 1;
}
