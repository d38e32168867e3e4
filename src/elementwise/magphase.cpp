#include "elementwise/magphase.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "math/arrays.h"
#include "math/complex_norm.h"

namespace sorvo::audio {

void magphase_1d_core(float* mag, float* phase, const float* src, std::size_t n, float power,
                      bool complexPhase, SimdLevel level) {
    // All of a tile is read before any of it is written: the arrays may be one.
    constexpr std::size_t tile_n = 256;
    std::array<float, tile_n> norms;
    std::array<float, tile_n> angles;
    for (std::size_t first = 0; first < n; first += tile_n) {
        const std::size_t count = std::min(tile_n, n - first);
        complex_norm_1d_core(norms.data(), src + 2 * first, static_cast<int>(count), power, level);
        take_angles(angles.data(), src + 2 * first, count, level);
        std::copy_n(norms.data(), count, mag + first);
        if (complexPhase) {
            take_unit_numbers(phase + 2 * first, angles.data(), count, level);
        } else {
            std::copy_n(angles.data(), count, phase + first);
        }
    }
}

void magphase_1d(std::vector<float>& mag, std::vector<float>& phase, std::vector<float>& src,
                 float power, bool complexPhase) {
    magphase_1d_core(mag.data(), phase.data(), src.data(), mag.size(), power, complexPhase);
}

}  // namespace sorvo::audio
