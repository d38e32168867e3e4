#include "mel/mel_kernels.h"

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// The bins of one band, of vec_n vectors V of `step` frames (or of single frames).
template <class V, std::size_t step, std::size_t vec_n>
SORVO_INLINE void sum_band(V (&sums)[vec_n], const float* src, std::size_t src_step,
                           const MelBand& band) {
    const float* values = src + band.begin * src_step;
    const std::size_t n = band.end - band.begin;
    for (std::size_t k = 0; k < n; ++k, values += src_step) {
        for (std::size_t i = 0; i < vec_n; ++i) {
            sums[i] += load<V>(values + i * step) * band.weights[k];
        }
    }
}

/// All bands of as many frames as fill `vec_n` vectors, again and again; returns the first frame
/// left.
template <class V, std::size_t step, std::size_t vec_n>
SORVO_INLINE std::size_t apply_finite(const MelJob& job, std::size_t t) {
    for (; t + vec_n * step <= job.frame_n; t += vec_n * step) {
        for (std::size_t m = 0; m < job.band_n; ++m) {
            V sums[vec_n] = {};
            sum_band<V, step>(sums, job.src + t, job.src_step, job.bands[m]);
            for (std::size_t i = 0; i < vec_n; ++i) {
                store(job.dst + m * job.dst_step + t + i * step, sums[i]);
            }
        }
    }
    return t;
}

void apply_bands(const MelJob& job) {
    const std::size_t t = apply_finite<FloatVec, lane_n, 4>(job, 0);
    apply_finite<float, 1, 1>(job, apply_finite<FloatVec, lane_n, 1>(job, t));
}

/// The products outside a band are 0 or NaN, whatever their order: below[k] are those of all bins
/// before k, above[k] those from k on, summed once for all bands.
template <class V, std::size_t step>
SORVO_INLINE std::size_t apply_any(const MelJob& job, float* outside, std::size_t t) {
    float* const below = outside;
    float* const above = outside + (job.freq_n + 1) * step;
    for (; t + step <= job.frame_n; t += step) {
        V sum = {};
        store(below, sum);
        for (std::size_t k = 0; k < job.freq_n; ++k) {
            sum += load<V>(job.src + k * job.src_step + t) * 0.0F;
            store(below + (k + 1) * step, sum);
        }
        sum = V{};
        store(above + job.freq_n * step, sum);
        for (std::size_t k = job.freq_n; k-- > 0;) {
            sum += load<V>(job.src + k * job.src_step + t) * 0.0F;
            store(above + k * step, sum);
        }
        for (std::size_t m = 0; m < job.band_n; ++m) {
            const MelBand& band = job.bands[m];
            V sums[1] = {load<V>(below + band.begin * step) + load<V>(above + band.end * step)};
            sum_band<V, step>(sums, job.src + t, job.src_step, band);
            store(job.dst + m * job.dst_step + t, sums[0]);
        }
    }
    return t;
}

void apply_bands_to_any(const MelJob& job, float* outside) {
    apply_any<float, 1>(job, outside, apply_any<FloatVec, lane_n>(job, outside, 0));
}

bool all_finite(const float* data, std::size_t n) {
    FloatVec sums[2] = {};  // x - x is 0, or NaN where x is not finite
    std::size_t i = 0;
    for (; i + 2 * lane_n <= n; i += 2 * lane_n) {
        for (std::size_t j = 0; j < 2; ++j) {
            const FloatVec x = load(data + i + j * lane_n);
            sums[j] += x - x;
        }
    }
    float sum = 0.0F;
    for (; i < n; ++i) {
        sum += data[i] - data[i];
    }
    float lanes[lane_n];
    store(lanes, sums[0] + sums[1]);
    for (const float lane : lanes) {
        sum += lane;
    }
    return sum == 0.0F;
}

}  // namespace

const MelKernels mel_kernels = {apply_bands, apply_bands_to_any, all_finite};

}  // namespace sorvo::audio::SORVO_LEVEL
