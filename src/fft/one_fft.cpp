#include "fft/one_fft.h"

#include <algorithm>
#include <vector>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "fft/one_kernels.h"
#include "fft/plan_cache.h"
#include "util/overflow_guard.h"
#include "util/scratch.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// False where there is no such way.
bool transform_by_kernels(float* dst, const float* src, int n, bool inverse, SimdLevel level) {
    if (n > max_planned_n) {
        return false;
    }
    const PlanUse<OnePlan> use(n, inverse);
    const FftPlanView& plan = use->fft();
    const OnePlanView& one = use->view();
    const OneKernels& kernels = one_kernels(level);
    const OneTransforms& transforms = inverse ? kernels.inverse : kernels.real;
    OneTransform transform = transforms.pow2;
    if (one.block_n == 0) {
        if (one.inner_n == 0) {
            return false;
        }
        const std::size_t src_n = inverse ? 2 * plan.n : plan.n;
        const bool tame = is_below(kernels.largest_magnitude(src, src_n), transform_limit(plan.n));
        transform = tame ? transforms.general : transforms.literal;
    }
    if (one.work_n <= stack_scratch_n) {
        constexpr std::size_t cache_line = 512;  // bits
        void* const work = __builtin_alloca_with_align(one.work_n * sizeof(float), cache_line);
        transform(dst, src, plan, one, static_cast<float*>(work));
    } else {
        Scratch work(one.work_n);
        transform(dst, src, plan, one, work.data());
    }
    return true;
}

}  // namespace

void real_fft(float* dst, const float* src, int n, SimdLevel level) {
    if (transform_by_kernels(dst, src, n, false, level)) {
        return;
    }
    auto data = make_zeros<float>(2 * static_cast<std::uint64_t>(n));
    fft_pre_process(data, src, n);
    fft(data, n, FftTable::instance().ref_table(n));
    std::copy(data.begin(), data.end(), dst);
}

void complex_ifft(float* dst, const float* src, int n, SimdLevel level) {
    if (transform_by_kernels(dst, src, n, true, level)) {
        return;
    }
    auto data = make_zeros<float>(2 * static_cast<std::uint64_t>(n));
    std::copy_n(src, data.size(), data.begin());
    ifft(data, n, FftTable::instance().ref_inv_table(n));
    std::copy(data.begin(), data.end(), dst);
}

}  // namespace sorvo::audio
