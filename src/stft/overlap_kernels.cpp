#include "stft/overlap_kernels.h"

#include "fft/lane_fft_general.inl"
#include "fft/lane_fft_pow2.inl"
#include "simd/magnitude.h"
#include "simd/shuffle.h"
#include "stft/prefetch_row.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// Element i of spectra of real data: above n / 2 the conjugate of element n - i.
struct HermitianBins {
    using Value = ComplexVec;

    const float* spectra;
    std::size_t row;
    std::size_t n;

    SORVO_INLINE ComplexVec operator()(std::size_t i) const {
        const bool mirrored = i > n / 2;
        const float* const bin = spectra + 2 * row * (mirrored ? n - i : i);
        const FloatVec im = load(bin + row);
        return {load(bin), mirrored ? -im : im};
    }
};

/// Divides by the length of the transform, weights, scales: real parts alone.
template <bool pow2>
struct WindowSink {
    static constexpr bool all_bins = true;

    FloatVec* frames;
    const float* window;
    float divisor;  ///< n, or where n is a power of two 1 / n: then the product is as exact
    float factor;

    SORVO_INLINE void operator()(std::size_t i, ComplexVec value) const {
        const FloatVec sample = pow2 ? value.re * divisor : value.re / divisor;
        frames[i] = sample * window[i] * factor;
    }
};

void synthesize(const SynthesisJob& job) {
    const FftPlanView& plan = job.plan;
    const auto n = static_cast<float>(plan.n);
    FloatVec* const work = reinterpret_cast<FloatVec*>(job.work);
    FloatVec* const frames = reinterpret_cast<FloatVec*>(job.frames);
    if (plan.base_n == 0) {
        for (std::size_t k = 0; k <= plan.n / 2; ++k) {
            const float* const bin = job.spectra + 2 * job.row * k;
            store_complex(work, k, {load(bin), load(bin + job.row)});
        }
        hermitian_transform(work, plan, WindowSink<true>{frames, job.window, 1.0F / n, job.factor});
    } else {
        const HermitianBins bins = {job.spectra, job.row, plan.n};
        GeneralTransform<HermitianBins>(plan, work + 2 * plan.n, bins)
            .run(work, WindowSink<false>{frames, job.window, n, job.factor});
    }
}

std::uint32_t separate(const RowMove& move) {
    LargestMagnitude largest;
    for (std::size_t k = 0; k < move.row_n; ++k) {
        const float* const src = move.src + k * move.src_row;
        float* const re = move.dst + 2 * k * move.dst_row;
        float* const im = re + move.dst_row;
        prefetch_row<false>(src, move.src_row, 2 * move.n);
        std::size_t i = 0;
        for (; i + lane_n <= move.n; i += lane_n) {
            const FloatVec low = load(src + 2 * i);
            const FloatVec high = load(src + 2 * i + lane_n);
            largest.see(low);
            largest.see(high);
            store_separated(re + i, im + i, low, high);
        }
        for (; i % lane_n != 0 || i < move.n; ++i) {
            re[i] = i < move.n ? src[2 * i] : 0.0F;
            im[i] = i < move.n ? src[2 * i + 1] : 0.0F;
            largest.see(re[i]);
            largest.see(im[i]);
        }
    }
    return largest.bits();
}

/// The later frames of a sum are those with the smaller i / hop_n: so i / hop_n descends.
void overlap_add(float* sums, std::size_t row, const float* frames, std::size_t sample_n,
                 std::size_t hop_n) {
    for (std::size_t shift = (sample_n - 1) / hop_n + 1; shift-- > 0;) {
        const std::size_t begin = shift * hop_n;
        const std::size_t end = begin + hop_n < sample_n ? begin + hop_n : sample_n;
        float* to = sums + shift;
        for (std::size_t i = begin; i < end; ++i, to += row) {
            store(to, load(to) + load(frames + i * lane_n));
        }
    }
}

void transpose_back(float* dst, std::size_t hop_n, const float* src, std::size_t row,
                    std::size_t row_n, std::size_t column_n) {
    for (std::size_t c = 0; c < column_n; c += lane_n) {
        float* const to = dst + c * hop_n;
        for (std::size_t first = 0; first < row_n && row_n >= 4; first += 4) {
            const std::size_t r = first + 4 <= row_n ? first : row_n - 4;
            FloatVec rows[4];
            for (std::size_t i = 0; i < 4; ++i) {
                rows[i] = load(src + (r + i) * row + c);
            }
            transpose_quarters(rows[0], rows[1], rows[2], rows[3]);
            for (std::size_t i = 0; i < 4; ++i) {
                store_quarters(to + i * hop_n + r, 4 * hop_n, rows[i]);
            }
        }
        for (std::size_t r = 0; r < row_n && row_n < 4; ++r) {
            for (std::size_t i = 0; i < lane_n; ++i) {
                to[i * hop_n + r] = src[r * row + c + i];
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

const OverlapKernels overlap_kernels = {lane_n,      separate,       synthesize,
                                        overlap_add, transpose_back, divide_all};

}  // namespace sorvo::audio::SORVO_LEVEL
