#include "fft/single_fft.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// True where the largest magnitude is far from any overflow of a sum.
bool is_tame(std::uint32_t magnitude_bits, int n) {
    float largest = 0.0F;
    std::memcpy(&largest, &magnitude_bits, sizeof largest);
    return largest < 1e37F / static_cast<float>(n);
}

/// Where a result overwrites its input it cannot be made again.
bool overlap(const float* dst, const float* src, std::size_t float_n) {
    const std::less<> before;
    return before(dst, src + float_n) && before(src, dst + float_n);
}

/// Bins of real data; false where the kernel's zeros cannot be relied on. Bins 0 and n / 2 are
/// real: their imaginary parts are +0 for any data.
bool real_fft_by_kernel(float* dst, const float* src, int n, const SingleKernels& kernels) {
    if (n > max_planned_n) {
        return false;
    }
    const FftPlanView plan = FftTable::instance().ref_plan(n).view();
    const auto size = static_cast<std::size_t>(n);
    alignas(64) float work[single_work_n];
    if (plan.single.part_n != 0) {
        if (!is_tame(kernels.largest_magnitude(src, size), n)) {
            return false;
        }
        kernels.real_general(dst, src, plan, work);
        return true;
    }
    if (plan.block_n == 0 || overlap(dst, src, 2 * size)) {
        return false;
    }
    const std::uint32_t magnitude = kernels.real_pow2(dst, src, plan, work);
    dst[1] = 1.0F;
    dst[size + 1] = 1.0F;
    const bool zero = kernels.any_zero(dst, 2 * size);
    dst[1] = 0.0F;
    dst[size + 1] = 0.0F;
    return !zero && is_tame(magnitude, n);
}

bool complex_ifft_by_kernel(float* dst, const float* src, int n, const SingleKernels& kernels) {
    if (n > max_planned_n) {
        return false;
    }
    const FftPlanView plan = FftTable::instance().ref_inv_plan(n).view();
    const std::size_t float_n = 2 * static_cast<std::size_t>(n);
    alignas(64) float work[single_work_n];
    if (plan.single.part_n != 0) {
        if (!is_tame(kernels.largest_magnitude(src, float_n), n)) {
            return false;
        }
        kernels.inverse_general(dst, src, plan, work);
        return true;
    }
    if (plan.block_n == 0 || overlap(dst, src, float_n)) {
        return false;
    }
    const std::uint32_t magnitude = kernels.inverse_pow2(dst, src, plan, work);
    return is_tame(magnitude, n) && !kernels.any_zero(dst, float_n);
}

}  // namespace

void real_fft(float* dst, const float* src, int n, const SingleKernels& kernels) {
    if (!real_fft_by_kernel(dst, src, n, kernels)) {
        auto data = make_zeros<float>(2 * static_cast<std::uint64_t>(n));
        fft_pre_process(data, src, n);
        fft(data, n, FftTable::instance().ref_table(n));
        std::copy(data.begin(), data.end(), dst);
    }
}

void complex_ifft(float* dst, const float* src, int n, const SingleKernels& kernels) {
    if (!complex_ifft_by_kernel(dst, src, n, kernels)) {
        auto data = make_zeros<float>(2 * static_cast<std::uint64_t>(n));
        std::copy_n(src, data.size(), data.begin());
        ifft(data, n, FftTable::instance().ref_inv_table(n));
        std::copy(data.begin(), data.end(), dst);
    }
}

}  // namespace sorvo::audio
