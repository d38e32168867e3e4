#include "stft/frame_kernels.h"

#include "fft/batch_general.h"
#include "fft/batch_pow2.h"
#include "math/functions.h"
#include "math/root.h"
#include "simd/magnitude.h"
#include "simd/shuffle.h"
#include "stft/prefetch_row.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// The windowed sample i of lane_n frames.
struct WindowedSamples {
    using Value = FloatVec;

    const float* samples;
    const std::uint32_t* offsets;
    const float* window;

    SORVO_INLINE FloatVec operator()(std::size_t i) const {
        return load(samples + offsets[i]) * window[i];
    }
};

SORVO_INLINE ComplexVec scaled(ComplexVec value, float scale) {
    if (scale != 1.0F) {  // most spectra are not scaled
        value.re *= scale;
        value.im *= scale;
    }
    return value;
}

/// Sinks of two layouts: a row for each value, or, `interleaved`, a row of re, im, re, im, ... Real
/// values have an im of 0 there.
template <bool interleaved, bool root>
struct PowerSink {
    static constexpr bool all_bins = false;

    float* out;
    std::size_t step;
    float scale;
    std::uint16_t* doubts;

    SORVO_INLINE PowerSink(const FrameJob& job, std::size_t t)
        : out(job.out + (interleaved ? 2 * t : t)),
          step(job.out_step),
          scale(job.scale),
          doubts(job.doubts) {}

    SORVO_INLINE void operator()(std::size_t bin, ComplexVec value) const {
        const ComplexVec x = scaled(value, scale);
        const FloatVec square = x.im * x.im + x.re * x.re;
        float* const dst = out + bin * step;
        if (root) {
            const Root found = find_root(square);
            put(dst, found.value);
            doubts[bin] = static_cast<std::uint16_t>(found.doubt);
        } else {
            put(dst, square);
        }
    }

    SORVO_INLINE static void put(float* dst, FloatVec value) {
        if (interleaved) {
            store_interleaved(dst, value, FloatVec{});
        } else {
            store(dst, value);
        }
    }

    /// Asks powf for the roots in doubt, of which squares with a sign were put. Done at the end: a
    /// call amid the transform would drive its values out of the registers.
    void finish(std::size_t bin_n) const {
        for (std::size_t bin = 0; root && bin < bin_n; bin += doubts_at_once) {
            std::uint64_t lanes = 0;
            for (std::size_t i = 0; i < doubts_at_once; ++i) {
                lanes |= std::uint64_t{doubts[bin + i]} << (16 * i);
            }
            for (; lanes != 0; lanes &= lanes - 1) {
                const auto lane = static_cast<std::size_t>(__builtin_ctzll(lanes));
                float* const value =
                    out + (bin + lane / 16) * step + lane % 16 * (interleaved ? 2 : 1);
                *value = math::powf(-*value, 0.5F);
            }
        }
    }
};

template <bool interleaved>
struct ComplexSink {
    static constexpr bool all_bins = false;

    float* out;
    std::size_t step;
    float scale;

    SORVO_INLINE ComplexSink(const FrameJob& job, std::size_t t)
        : out(job.out + (interleaved ? 2 * t : t)), step(job.out_step), scale(job.scale) {}

    SORVO_INLINE void operator()(std::size_t bin, ComplexVec value) const {
        const ComplexVec x = scaled(value, scale);
        if (interleaved) {
            store_interleaved(out + bin * step, x.re, x.im);
        } else {
            store(out + 2 * bin * step, x.re);
            store(out + (2 * bin + 1) * step, x.im);
        }
    }

    void finish(std::size_t /*bin_n*/) const {}
};

/// The transforms of lane_n frames at a time.
template <class Sink, class Transform>
void for_each_tile(const FrameJob& job, Transform transform) {
    for (std::size_t t = 0; t < job.frame_n; t += lane_n) {
        const Sink sink(job, t);
        transform(reinterpret_cast<FloatVec*>(job.work),
                  WindowedSamples{job.samples + t, job.offsets, job.window}, sink);
        sink.finish(job.plan.n / 2 + 1);
    }
}

template <class Sink>
void transform_frames(const FrameJob& job) {
    const FftPlanView& plan = job.plan;
    for_each_tile<Sink>(job, [&](FloatVec* work, const WindowedSamples& input, const Sink& sink) {
        if (plan.base_n == 0) {
            batch_real_pow2(work, plan, input, sink);
        } else {
            BatchTransform<WindowedSamples>(plan, work + 2 * plan.n, input).run(work, sink);
        }
    });
}

/// The same samples as complex numbers, for data of any kind: outside the window they are 0 even if
/// their product with its zeros is not.
struct LiteralSamples {
    using Value = ComplexVec;

    WindowedSamples samples;
    std::size_t begin;
    std::size_t end;

    SORVO_INLINE ComplexVec operator()(std::size_t i) const {
        return as_complex(i >= begin && i < end ? samples(i) : FloatVec{});
    }
};

template <class Sink>
void transform_literally(const FrameJob& job) {
    const FftPlanView& plan = job.plan;
    for_each_tile<Sink>(job, [&](FloatVec* work, const WindowedSamples& samples, const Sink& sink) {
        const LiteralSamples input = {samples, job.begin, job.end};
        if (plan.base_n == 0) {
            batch_literal_pow2<false>(work, plan, input, sink);
        } else {
            BatchTransform<LiteralSamples, Products::literal>(plan, work + 2 * plan.n, input)
                .run(work, sink);
        }
    });
}

/// Blocks of 4 rows and lane_n columns; the last of either direction overlap the ones before. The
/// samples of lane_n columns are short pieces of many lines: nothing but a prefetch foresees them.
std::uint32_t transpose(float* dst, std::size_t dst_step, const float* src, std::size_t hop_n,
                        std::size_t row_n, std::size_t column_n) {
    LargestMagnitude largest;
    for (std::size_t column = 0; column < column_n; column += lane_n) {
        const std::size_t c = column + lane_n <= column_n ? column : column_n - lane_n;
        const float* const from = src + c * hop_n;
        for (std::size_t row = 0; row < row_n && row_n >= 4; row += 4) {
            const std::size_t r = row + 4 <= row_n ? row : row_n - 4;
            for (std::size_t i = 0; i < lane_n && row % 16 == 0; ++i) {
                __builtin_prefetch(from + (lane_n + i) * hop_n + r);
            }
            FloatVec rows[4];
            for (std::size_t i = 0; i < 4; ++i) {
                rows[i] = load_quarters(from + i * hop_n + r, 4 * hop_n);
                largest.see(rows[i]);
            }
            transpose_quarters(rows[0], rows[1], rows[2], rows[3]);
            for (std::size_t i = 0; i < 4; ++i) {
                store(dst + (r + i) * dst_step + c, rows[i]);
            }
        }
        for (std::size_t r = 0; r < row_n && row_n < 4; ++r) {
            for (std::size_t i = 0; i < lane_n; ++i) {
                const float value = from[i * hop_n + r];
                largest.see(value);
                dst[r * dst_step + c + i] = value;
            }
        }
    }
    return largest.bits();
}

bool interleave(const BinMove& move) {
    ZeroSeen zero;
    for (std::size_t k = 0; k < move.bin_n; ++k) {
        const float* const re = move.src + 2 * k * move.src_step;
        const float* const im = re + move.src_step;
        float* const dst = move.dst + k * move.dst_step;
        const bool real = k == 0 || k + 1 == move.bin_n;
        prefetch_row<true>(dst, move.dst_step, 2 * move.frame_n);
        std::size_t i = 0;
        for (; i + lane_n <= move.frame_n; i += lane_n) {
            const FloatVec a = load(re + i);
            const FloatVec b = load(im + i);
            store_interleaved(dst + 2 * i, a, b);
            zero.see(a);
            if (!real) {
                zero.see(b);
            }
        }
        for (; i < move.frame_n; ++i) {
            dst[2 * i] = re[i];
            dst[2 * i + 1] = im[i];
            zero.see(re[i]);
            if (!real) {
                zero.see(im[i]);
            }
        }
    }
    return zero.seen();
}

void interleave_zeros(const BinMove& move) {
    for (std::size_t k = 0; k < move.bin_n; ++k) {
        const float* const re = move.src + k * move.src_step;
        float* const dst = move.dst + k * move.dst_step;
        prefetch_row<true>(dst, move.dst_step, 2 * move.frame_n);
        std::size_t i = 0;
        for (; i + lane_n <= move.frame_n; i += lane_n) {
            store_interleaved(dst + 2 * i, load(re + i), FloatVec{});
        }
        for (; i < move.frame_n; ++i) {
            dst[2 * i] = re[i];
            dst[2 * i + 1] = 0.0F;
        }
    }
}

}  // namespace

const FrameKernels frame_kernels = {
    lane_n,
    transpose,
    {transform_frames<PowerSink<false, false>>, transform_frames<PowerSink<false, true>>,
     transform_frames<ComplexSink<false>>},
    {transform_frames<PowerSink<true, false>>, transform_frames<PowerSink<true, true>>,
     transform_frames<ComplexSink<true>>},
    {transform_literally<PowerSink<false, false>>, transform_literally<PowerSink<false, true>>,
     transform_literally<ComplexSink<false>>},
    interleave,
    interleave_zeros};

}  // namespace sorvo::audio::SORVO_LEVEL
