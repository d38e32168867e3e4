// What kernels may leave out of sums decides nothing as long as no sum overflows. Data are looked
// at first: by the bit pattern of their largest magnitude, of which NaN is above infinity.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace sorvo::audio {

/// True if that magnitude is below the limit. Never for what is not finite.
inline bool is_below(std::uint32_t magnitude_bits, float limit) {
    float magnitude = 0.0F;
    std::memcpy(&magnitude, &magnitude_bits, sizeof magnitude);
    return magnitude < limit;
}

/// Of values of smaller magnitude a transform of length n is far from any overflow.
inline float transform_limit(std::size_t n) {
    return 1e37F / static_cast<float>(n);
}

/// The same for its squared magnitudes.
inline float squares_limit(std::size_t n) {
    return 1e18F / static_cast<float>(n);
}

}  // namespace sorvo::audio
