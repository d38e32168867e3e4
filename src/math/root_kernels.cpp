#include "math/root_kernels.h"

#include "math/functions.h"
#include "math/root.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// Asks powf for the lanes of x that are in doubt.
[[gnu::noinline, gnu::cold]] void ask_for_roots(float* dst, FloatVec x, unsigned doubt) {
    float asked[lane_n];
    store(asked, x);
    for (; doubt != 0; doubt &= doubt - 1) {
        const int lane = __builtin_ctz(doubt);
        dst[lane] = math::powf(asked[lane], 0.5F);
    }
}

void take_roots(float* dst, const float* src, std::size_t n) {
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        const FloatVec x = load(src + i);
        const Root root = find_root(x);
        store(dst + i, root.value);
        if (root.doubt != 0) {
            ask_for_roots(dst + i, x, root.doubt);
        }
    }
    for (; i < n; ++i) {
        dst[i] = math::powf(src[i], 0.5F);
    }
}

}  // namespace

const RootKernels root_kernels = {take_roots};

}  // namespace sorvo::audio::SORVO_LEVEL
