#include "stft/overlap_kernels.h"

#include "fft/batch_general.h"
#include "fft/batch_pow2.h"
#include "simd/magnitude.h"
#include "simd/shuffle.h"
#include "stft/prefetch_row.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// Element i of spectra of real data: above n / 2 the conjugate of element n - i.
struct HermitianBins {
    using Value = ComplexVec;

    const float* spectra;
    std::size_t step;
    std::size_t n;

    SORVO_INLINE ComplexVec operator()(std::size_t i) const {
        const bool mirrored = i > n / 2;
        const float* const bin = spectra + 2 * step * (mirrored ? n - i : i);
        const FloatVec im = load(bin + step);
        return {load(bin), mirrored ? -im : im};
    }
};

/// Divides by the length of the transform, weights, scales: real parts alone.
template <bool pow2, Products products>
struct WindowSink {
    static constexpr bool all_bins = true;

    const SynthesisJob& job;
    float divisor;  ///< n, or where n is a power of two 1 / n: then the product is as exact

    SORVO_INLINE explicit WindowSink(const SynthesisJob& synthesis)
        : job(synthesis),
          divisor(pow2 ? 1.0F / static_cast<float>(job.plan.n) : static_cast<float>(job.plan.n)) {}

    SORVO_INLINE void operator()(std::size_t i, ComplexVec value) const {
        const FloatVec sample = pow2 ? value.re * divisor : value.re / divisor;
        FloatVec weighted = sample * job.window[i];
        if (products == Products::literal && (i < job.begin || i >= job.end)) {
            weighted = FloatVec{};
        }
        store(job.frames + i * lane_n, weighted * job.factor);
    }
};

void synthesize(const SynthesisJob& job) {
    const FftPlanView& plan = job.plan;
    FloatVec* const work = reinterpret_cast<FloatVec*>(job.work);
    if (plan.base_n == 0) {
        for (std::size_t k = 0; k <= plan.n / 2; ++k) {
            const float* const bin = job.spectra + 2 * job.step * k;
            store_complex(work, k, {load(bin), load(bin + job.step)});
        }
        batch_hermitian_pow2(work, plan, WindowSink<true, Products::needed>(job));
    } else {
        const HermitianBins bins = {job.spectra, job.step, plan.n};
        BatchTransform<HermitianBins>(plan, work + 2 * plan.n, bins)
            .run(work, WindowSink<false, Products::needed>(job));
    }
}

void synthesize_literally(const SynthesisJob& job) {
    const FftPlanView& plan = job.plan;
    FloatVec* const work = reinterpret_cast<FloatVec*>(job.work);
    const HermitianBins bins = {job.spectra, job.step, plan.n};
    if (plan.base_n == 0) {
        batch_literal_pow2<true>(work, plan, bins, WindowSink<true, Products::literal>(job));
    } else {
        BatchTransform<HermitianBins, Products::literal>(plan, work + 2 * plan.n, bins)
            .run(work, WindowSink<false, Products::literal>(job));
    }
}

std::uint32_t separate(const BinMove& move) {
    LargestMagnitude largest;
    for (std::size_t k = 0; k < move.bin_n; ++k) {
        const float* const src = move.src + k * move.src_step;
        float* const re = move.dst + 2 * k * move.dst_step;
        float* const im = re + move.dst_step;
        prefetch_row<false>(src, move.src_step, 2 * move.frame_n);
        std::size_t i = 0;
        for (; i + lane_n <= move.frame_n; i += lane_n) {
            const FloatVec low = load(src + 2 * i);
            const FloatVec high = load(src + 2 * i + lane_n);
            largest.see(low);
            largest.see(high);
            store_separated(re + i, im + i, low, high);
        }
        for (; i % lane_n != 0 || i < move.frame_n; ++i) {
            re[i] = i < move.frame_n ? src[2 * i] : 0.0F;
            im[i] = i < move.frame_n ? src[2 * i + 1] : 0.0F;
            largest.see(re[i]);
            largest.see(im[i]);
        }
    }
    return largest.bits();
}

/// The later frames of a sum are those with the smaller i / hop_n: so i / hop_n descends.
void overlap_add(float* sums, std::size_t step, const float* frames, std::size_t sample_n,
                 std::size_t hop_n) {
    for (std::size_t shift = (sample_n - 1) / hop_n + 1; shift-- > 0;) {
        const std::size_t begin = shift * hop_n;
        const std::size_t end = begin + hop_n < sample_n ? begin + hop_n : sample_n;
        float* to = sums + shift;
        for (std::size_t i = begin; i < end; ++i, to += step) {
            store(to, load(to) + load(frames + i * lane_n));
        }
    }
}

void transpose_back(float* dst, std::size_t hop_n, const float* src, std::size_t step,
                    std::size_t row_n, std::size_t column_n) {
    for (std::size_t c = 0; c < column_n; c += lane_n) {
        float* const to = dst + c * hop_n;
        for (std::size_t first = 0; first < row_n && row_n >= 4; first += 4) {
            const std::size_t r = first + 4 <= row_n ? first : row_n - 4;
            FloatVec rows[4];
            for (std::size_t i = 0; i < 4; ++i) {
                rows[i] = load(src + (r + i) * step + c);
            }
            transpose_quarters(rows[0], rows[1], rows[2], rows[3]);
            for (std::size_t i = 0; i < 4; ++i) {
                store_quarters(to + i * hop_n + r, 4 * hop_n, rows[i]);
            }
        }
        for (std::size_t r = 0; r < row_n && row_n < 4; ++r) {
            for (std::size_t i = 0; i < lane_n; ++i) {
                to[i * hop_n + r] = src[r * step + c + i];
            }
        }
    }
}

void divide_all(float* dst, const float* src, const float* divisors, std::size_t n) {
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        store(dst + i, load(src + i) / load(divisors + i));
    }
    for (; i < n; ++i) {
        dst[i] = src[i] / divisors[i];
    }
}

}  // namespace

const OverlapKernels overlap_kernels = {
    lane_n, separate, synthesize, synthesize_literally, overlap_add, transpose_back, divide_all};

}  // namespace sorvo::audio::SORVO_LEVEL
