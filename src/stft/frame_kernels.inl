// The kernels of frame_kernels.h for the level of the including translation unit.
#include "fft/lane_fft_general.inl"
#include "fft/lane_fft_pow2.inl"
#include "fft/lane_moves.inl"
#include "util/lanes.inl"

namespace sorvo::audio {
namespace {

/// The windowed sample i of lane_n frames.
struct WindowedSamples {
    using Value = Pack;

    const float* samples;
    const std::uint32_t* offsets;
    const float* window;

    SORVO_INLINE Pack operator()(std::size_t i) const {
        return load(samples + offsets[i]) * window[i];
    }
};

struct SquareSink {
    static constexpr bool all_bins = false;

    float* out;
    std::size_t row;
    float scale;

    SORVO_INLINE void operator()(std::size_t bin, Complex value) const {
        const Pack re = value.re * scale;
        const Pack im = value.im * scale;
        store(out + bin * row, im * im + re * re);
    }
};

struct ComplexSink {
    static constexpr bool all_bins = false;

    float* out;
    std::size_t row;
    float scale;

    SORVO_INLINE void operator()(std::size_t bin, Complex value) const {
        store(out + 2 * bin * row, value.re * scale);
        store(out + (2 * bin + 1) * row, value.im * scale);
    }
};

template <class Transform>
void for_each_tile(const FrameJob& job, Transform transform) {
    Pack* const work = reinterpret_cast<Pack*>(job.work);
    for (std::size_t t = 0; t < job.frame_n; t += lane_n) {
        transform(t, work, WindowedSamples{job.samples + t, job.offsets, job.window});
    }
}

template <class Sink>
void transform_tiles(const FrameJob& job) {
    const FftPlanView& plan = job.plan;
    for_each_tile(job, [&](std::size_t t, Pack* work, const WindowedSamples& input) {
        const Sink sink = {job.out + t, job.out_row, job.scale};
        if (plan.base_n == 0) {
            real_transform(work, plan, input, sink);
        } else {
            GeneralTransform<WindowedSamples>(plan, work + 2 * plan.n, input).run(work, sink);
        }
    });
}

void exact_spectra(const FrameJob& job) {
    for_each_tile(job, [&](std::size_t t, Pack* work, const WindowedSamples& input) {
        const auto windowed = [&](std::size_t i) {  // x * 0 could be -0
            return i >= job.begin && i < job.end ? input(i) : Pack{};
        };
        exact_transform(work, job.plan, windowed, ComplexSink{job.out + t, job.out_row, job.scale});
    });
}

/// Blocks of 4 rows and lane_n columns; the last of either direction overlap the ones before.
std::uint32_t transpose(float* dst, std::size_t dst_row, const float* src, std::size_t hop_n,
                        std::size_t row_n, std::size_t column_n) {
    Magnitude magnitude;
    for (std::size_t column = 0; column < column_n; column += lane_n) {
        const std::size_t c = column + lane_n <= column_n ? column : column_n - lane_n;
        const float* const from = src + c * hop_n;
        for (std::size_t row = 0; row < row_n && row_n >= 4; row += 4) {
            const std::size_t r = row + 4 <= row_n ? row : row_n - 4;
            Pack rows[4];
            for (std::size_t i = 0; i < 4; ++i) {
                rows[i] = load_columns(from + i * hop_n + r, hop_n);
                magnitude.see(rows[i]);
            }
            transpose_quarters(rows[0], rows[1], rows[2], rows[3]);
            for (std::size_t i = 0; i < 4; ++i) {
                store(dst + (r + i) * dst_row + c, rows[i]);
            }
        }
        for (std::size_t r = 0; r < row_n && row_n < 4; ++r) {
            for (std::size_t i = 0; i < lane_n; ++i) {
                const float value = from[i * hop_n + r];
                magnitude.see(value);
                dst[r * dst_row + c + i] = value;
            }
        }
    }
    return magnitude.bits();
}

Zeros interleave(float* dst, const float* re, const float* im, std::size_t n) {
    Zeros zeros = {false, false};
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        const Pack a = load(re + i);
        const Pack b = load(im + i);
        zeros.re = any_zero(a) || zeros.re;
        zeros.im = any_zero(b) || zeros.im;
        store_interleaved(dst + 2 * i, a, b);
    }
    for (; i < n; ++i) {
        zeros.re = re[i] == 0.0F || zeros.re;
        zeros.im = im[i] == 0.0F || zeros.im;
        dst[2 * i] = re[i];
        dst[2 * i + 1] = im[i];
    }
    return zeros;
}

void interleave_zeros(float* dst, const float* re, std::size_t n) {
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        store_with_zeros(dst + 2 * i, re + i);
    }
    for (; i < n; ++i) {
        dst[2 * i] = re[i];
        dst[2 * i + 1] = 0.0F;
    }
}

constexpr FrameKernels make_frame_kernels(CpuLevel level) {
    return {level,
            lane_n,
            transpose,
            transform_tiles<SquareSink>,
            transform_tiles<ComplexSink>,
            exact_spectra,
            interleave,
            interleave_zeros};
}

}  // namespace
}  // namespace sorvo::audio
