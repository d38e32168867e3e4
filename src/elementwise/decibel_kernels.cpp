#include "elementwise/decibel_kernels.h"

#include "math/log10f.h"
#include "simd/each_vector.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

float maximum(const float* src, std::size_t n) {
    constexpr std::size_t step = 4;  // vectors: one would wait for itself
    FloatVec max[step];
    for (FloatVec& lanes : max) lanes = broadcast(src[0]);
    std::size_t i = 0;
    for (; i + step * lane_n <= n; i += step * lane_n) {
        for (std::size_t j = 0; j < step; ++j) {
            const FloatVec x = load(src + i + j * lane_n);
            max[j] = max[j] < x ? x : max[j];
        }
    }
    float result = src[0];
    for (; i < n; ++i) result = result < src[i] ? src[i] : result;
    for (const FloatVec& lanes : max) {
        for (std::size_t l = 0; l < lane_n; ++l) result = result < lanes[l] ? lanes[l] : result;
    }
    return result;
}

template <MathForm form>
void take_decibels(float* dst, const float* src, std::size_t n, float ref_db, float floor) {
    for_each_vector<1, 1>(dst, src, n, [=](float* to, const float* from) SORVO_INLINE_BODY {
        const FloatVec x = load(from);
        const FloatVec clamped = x > amin ? x : broadcast(amin);
        const FloatVec db = 10.0F * log10f_of<form>(clamped) - ref_db;
        store(to, floor > db ? broadcast(floor) : db);
    });
}

}  // namespace

const DecibelKernels decibel_kernels = {
    maximum, {take_decibels<MathForm::rounded>, take_decibels<MathForm::classic>}};

}  // namespace sorvo::audio::SORVO_LEVEL
