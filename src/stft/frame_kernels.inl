// The kernels of frame_kernels.h for the level of the including translation unit.
#include "fft/lane_fft_general.inl"
#include "fft/lane_fft_pow2.inl"
#include "util/lanes.inl"
#include "stft/lane_moves.inl"

namespace sorvo::audio {
namespace {

/// The windowed sample i of lane_n frames.
struct WindowedSamples {
    const float* samples;
    const std::uint32_t* offsets;
    const float* window;

    SORVO_INLINE Pack operator()(std::size_t i) const {
        return load(samples + offsets[i]) * window[i];
    }
};

struct SquareSink {
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
