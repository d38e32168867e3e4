// The digest of an array, for JavaScript, which has no fast integers of 64 bits.
#include <cstdint>

#include "digest/sum.h"

/// words = upper and lower half.
extern "C" void sorvoDigest(std::uint32_t* words, const float* values, std::uint32_t n) {
    sorvo_tool::Sum sum;
    for (std::uint32_t i = 0; i < n; ++i) sum.add(values[i]);
    words[0] = static_cast<std::uint32_t>(sum.value() >> 32U);
    words[1] = static_cast<std::uint32_t>(sum.value());
}
