#include "fft/single_fft.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "util/workspace.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// True where the largest magnitude is far from any overflow of a sum.
bool is_tame(std::uint32_t magnitude_bits, std::size_t n) {
    float largest = 0.0F;
    std::memcpy(&largest, &magnitude_bits, sizeof largest);
    return largest < 1e37F / static_cast<float>(n);
}

/// False where only the plain routine gives the right results.
bool by_kernel(float* dst, const float* src, std::size_t src_n, const FftPlanView& plan,
               const SingleKernels& kernels, const SingleTransforms& transforms) {
    const bool pow2 = plan.block_n != 0;
    if (!pow2 &&
        (plan.single.part_n == 0 || !is_tame(kernels.largest_magnitude(src, src_n), plan.n))) {
        return false;
    }
    const auto transform = pow2 ? transforms.pow2 : transforms.general;
    constexpr std::size_t usual_work_n = std::size_t{4} * max_planned_n;
    if (plan.work_n <= usual_work_n) {
        alignas(64) float work[usual_work_n];
        transform(dst, src, plan, work);
    } else {
        Workspace work({plan.work_n});
        transform(dst, src, plan, work.take(plan.work_n));
    }
    return true;
}

}  // namespace

void real_fft(float* dst, const float* src, int n, const SingleKernels& kernels) {
    if (n <= max_single_n) {
        const FftPlanView& plan = FftTable::instance().ref_plan(n).view();
        if (by_kernel(dst, src, plan.n, plan, kernels, kernels.real)) {
            return;
        }
    }
    auto data = make_zeros<float>(2 * static_cast<std::uint64_t>(n));
    fft_pre_process(data, src, n);
    fft(data, n, FftTable::instance().ref_table(n));
    std::copy(data.begin(), data.end(), dst);
}

void complex_ifft(float* dst, const float* src, int n, const SingleKernels& kernels) {
    if (n <= max_single_n) {
        const FftPlanView& plan = FftTable::instance().ref_inv_plan(n).view();
        if (by_kernel(dst, src, 2 * plan.n, plan, kernels, kernels.inverse)) {
            return;
        }
    }
    auto data = make_zeros<float>(2 * static_cast<std::uint64_t>(n));
    std::copy_n(src, data.size(), data.begin());
    ifft(data, n, FftTable::instance().ref_inv_table(n));
    std::copy(data.begin(), data.end(), dst);
}

}  // namespace sorvo::audio
