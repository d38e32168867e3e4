// Complex elements in groups of group_n at every level: their real parts, then their imaginary
// parts. One address serves both.
#pragma once

#include "fft/one_plan.h"
#include "simd/complex.h"

namespace sorvo::audio::SORVO_LEVEL {

/// Where the real part of element i is. Its imaginary part is group_n further on; both are followed
/// by those of the next elements up to the end of the group.
SORVO_INLINE std::size_t group_offset(std::size_t i) {
    return 2 * (i - i % group_n) + i % group_n;
}

SORVO_INLINE ComplexVec load_group(const float* x) {
    return {load(x), load(x + group_n)};
}

SORVO_INLINE void store_group(float* x, ComplexVec value) {
    store(x, value.re);
    store(x + group_n, value.im);
}

}  // namespace sorvo::audio::SORVO_LEVEL
