// The kernels of frame_kernels.h for the level of the including translation unit.
#include "elementwise/lane_root.inl"
#include "fft/lane_fft_general.inl"
#include "fft/lane_fft_pow2.inl"
#include "fft/lane_moves.inl"
#include "util/lanes.inl"

extern "C" float powf(float, float);

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

SORVO_INLINE Complex scaled(Complex value, float scale) {
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
    std::size_t row;
    float scale;
    std::uint16_t* doubts;

    SORVO_INLINE PowerSink(const FrameJob& job, std::size_t t)
        : out(job.out + (interleaved ? 2 * t : t)),
          row(job.out_row),
          scale(job.scale),
          doubts(job.doubts) {}

    SORVO_INLINE void operator()(std::size_t bin, Complex value) const {
        const Complex x = scaled(value, scale);
        const Pack square = x.im * x.im + x.re * x.re;
        float* const dst = out + bin * row;
        if (root) {
            const Root found = find_root(square);
            put(dst, found.value);
            doubts[bin] = static_cast<std::uint16_t>(found.doubt);
        } else {
            put(dst, square);
        }
    }

    SORVO_INLINE static void put(float* dst, Pack value) {
        if (interleaved) {
            store_interleaved(dst, value, Pack{});
        } else {
            store(dst, value);
        }
    }

    /// Asks powf for the roots in doubt, of which squares with a sign were put. Done at the end: a
    /// call amid the transform would drive its values out of the registers.
    void finish(std::size_t bin_n) const {
        for (std::size_t bin = 0; root && bin < bin_n; bin += doubts_at_once) {
            std::uint64_t lanes = 0;
            __builtin_memcpy(&lanes, doubts + bin, sizeof lanes);
            for (; lanes != 0; lanes &= lanes - 1) {
                const auto lane = static_cast<std::size_t>(__builtin_ctzll(lanes));
                float* const value =
                    out + (bin + lane / 16) * row + lane % 16 * (interleaved ? 2 : 1);
                *value = ::powf(-*value, 0.5F);
            }
        }
    }
};

template <bool interleaved>
struct ComplexSink {
    static constexpr bool all_bins = false;

    float* out;
    std::size_t row;
    float scale;

    SORVO_INLINE ComplexSink(const FrameJob& job, std::size_t t)
        : out(job.out + (interleaved ? 2 * t : t)), row(job.out_row), scale(job.scale) {}

    SORVO_INLINE void operator()(std::size_t bin, Complex value) const {
        const Complex x = scaled(value, scale);
        if (interleaved) {
            store_interleaved(out + bin * row, x.re, x.im);
        } else {
            store(out + 2 * bin * row, x.re);
            store(out + (2 * bin + 1) * row, x.im);
        }
    }

    void finish(std::size_t /*bin_n*/) const {}
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
        const Sink sink(job, t);
        if (plan.base_n == 0) {
            real_transform(work, plan, input, sink);
        } else {
            GeneralTransform<WindowedSamples>(plan, work + 2 * plan.n, input).run(work, sink);
        }
        sink.finish(plan.n / 2 + 1);
    });
}

template <bool interleaved, bool root>
void powers(const FrameJob& job) {
    transform_tiles<PowerSink<interleaved, root>>(job);
}

template <bool interleaved>
void spectra(const FrameJob& job) {
    transform_tiles<ComplexSink<interleaved>>(job);
}

void exact_spectra(const FrameJob& job) {
    for_each_tile(job, [&](std::size_t t, Pack* work, const WindowedSamples& input) {
        const auto windowed = [&](std::size_t i) {  // x * 0 could be -0
            return i >= job.begin && i < job.end ? input(i) : Pack{};
        };
        exact_transform(work, job.plan, windowed, ComplexSink<false>(job, t));
    });
}

/// Blocks of 4 rows and lane_n columns; the last of either direction overlap the ones before. The
/// samples of lane_n columns are short pieces of many lines: nothing but a prefetch foresees them.
std::uint32_t transpose(float* dst, std::size_t dst_row, const float* src, std::size_t hop_n,
                        std::size_t row_n, std::size_t column_n) {
    Magnitude magnitude;
    for (std::size_t column = 0; column < column_n; column += lane_n) {
        const std::size_t c = column + lane_n <= column_n ? column : column_n - lane_n;
        const float* const from = src + c * hop_n;
        for (std::size_t row = 0; row < row_n && row_n >= 4; row += 4) {
            const std::size_t r = row + 4 <= row_n ? row : row_n - 4;
            for (std::size_t i = 0; i < lane_n && row % 16 == 0; ++i) {
                __builtin_prefetch(from + (lane_n + i) * hop_n + r);
            }
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

bool interleave(const RowMove& move) {
    Pack smallest = broadcast(1.0F);
    bool zero = false;
    for (std::size_t k = 0; k < move.row_n; ++k) {
        const float* const re = move.src + 2 * k * move.src_row;
        const float* const im = re + move.src_row;
        float* const dst = move.dst + k * move.dst_row;
        const bool real = k == 0 || k + 1 == move.row_n;
        prefetch_row<true>(dst, move.dst_row, 2 * move.n);
        std::size_t i = 0;
        for (; i + lane_n <= move.n; i += lane_n) {
            const Pack a = load(re + i);
            const Pack b = load(im + i);
            store_interleaved(dst + 2 * i, a, b);
            smallest = smaller_magnitude(smallest, a);
            smallest = real ? smallest : smaller_magnitude(smallest, b);
        }
        for (; i < move.n; ++i) {
            dst[2 * i] = re[i];
            dst[2 * i + 1] = im[i];
            zero = zero || re[i] == 0.0F || (im[i] == 0.0F && !real);
        }
    }
    return zero || any_zero(smallest);
}

void interleave_zeros(const RowMove& move) {
    for (std::size_t k = 0; k < move.row_n; ++k) {
        const float* const re = move.src + k * move.src_row;
        float* const dst = move.dst + k * move.dst_row;
        prefetch_row<true>(dst, move.dst_row, 2 * move.n);
        std::size_t i = 0;
        for (; i + lane_n <= move.n; i += lane_n) {
            store_with_zeros(dst + 2 * i, re + i);
        }
        for (; i < move.n; ++i) {
            dst[2 * i] = re[i];
            dst[2 * i + 1] = 0.0F;
        }
    }
}

constexpr FrameKernels make_frame_kernels(CpuLevel level) {
    return {level,
            lane_n,
            transpose,
            {powers<false, false>, powers<false, true>, spectra<false>},
            {powers<true, false>, powers<true, true>, spectra<true>},
            exact_spectra,
            interleave,
            interleave_zeros};
}

}  // namespace
}  // namespace sorvo::audio
