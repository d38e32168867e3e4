#include "math/complex_norm.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "math/power.h"

namespace sorvo::audio {
namespace {

constexpr std::size_t tile_n = 256;

/// Calls take(norms, first, count) with the norms of the complex values `first` to
/// `first + count - 1`, tile by tile. All of a tile is read before it is taken.
template <class Taker>
void for_each_tile_of_norms(const float* src, std::size_t n, float power, SimdLevel level,
                            Taker take) {
    const float half_power = power * 0.5F;
    std::array<float, tile_n> norms;
    for (std::size_t first = 0; first < n; first += tile_n) {
        const std::size_t count = std::min(tile_n, n - first);
        const float* const z = src + 2 * first;
        for (std::size_t i = 0; i < count; ++i) {
            norms[i] = z[2 * i + 1] * z[2 * i + 1] + z[2 * i] * z[2 * i];
        }
        raise_to_power(norms.data(), norms.data(), count, half_power, level);
        take(norms.data(), first, count);
    }
}

}  // namespace

void complex_norm_1d_core(float* dst, const float* src, int n, float power, SimdLevel level) {
    for_each_tile_of_norms(src, static_cast<std::size_t>(std::max(n, 0)), power, level,
                           [dst](const float* norms, std::size_t first, std::size_t count) {
                               std::copy_n(norms, count, dst + first);
                           });
}

void complex_norm_1d(std::vector<float>& dst, std::vector<float>& src, float power) {
    for_each_tile_of_norms(src.data(), dst.size(), power, simd_level(),
                           [&dst](const float* norms, std::size_t first, std::size_t count) {
                               std::copy_n(norms, count, dst.data() + first);
                           });
}

void complex_norm_1d(std::vector<float>& data, float power) {
    for_each_tile_of_norms(data.data(), data.size() / 2, power, simd_level(),
                           [&data](const float* norms, std::size_t first, std::size_t count) {
                               for (std::size_t i = 0; i < count; ++i) {
                                   data[2 * (first + i)] = norms[i];
                                   data[2 * (first + i) + 1] = 0.0F;
                               }
                           });
}

}  // namespace sorvo::audio
