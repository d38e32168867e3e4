// The kernels of the inverse spectrogram: many frames side by side, a frame in each lane.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fft/fft_plan.h"
#include "simd/dispatch.h"
#include "stft/block_layout.h"

namespace sorvo::audio {

/// lane_n spectra of real signals to be turned into windowed frames.
struct SynthesisJob {
    FftPlanView plan;      ///< of the inverse transform
    const float* spectra;  ///< rows 2 k and 2 k + 1: the real and the imaginary part of bin k
    std::size_t step;      ///< floats from row to row
    const float* window;   ///< as long as a frame
    std::size_t begin;     ///< the frame is 0 outside begin ... end - 1
    std::size_t end;
    float factor;   ///< after the window
    float* work;    ///< as FrameJob::work
    float* frames;  ///< sample i of lane l at i * lane_n + l; aligned
};

struct OverlapKernels {
    std::size_t lane_n;

    /// Bins of re, im, re, im, ... to rows 2 k and 2 k + 1, filled up with zeros to whole vectors.
    /// The result is the bit pattern of the largest magnitude, NaN being above infinity.
    std::uint32_t (*separate)(const BinMove& move);

    /// Finite data of small magnitude only; the sign of a zero may be wrong.
    void (*synthesize)(const SynthesisJob& job);
    /// Any data.
    void (*synthesize_literally)(const SynthesisJob& job);

    /// sums[i % hop_n * step + i / hop_n + l] += sample i of lane l, for i < sample_n, in the order
    /// of the lanes for each sum.
    void (*overlap_add)(float* sums, std::size_t step, const float* frames, std::size_t sample_n,
                        std::size_t hop_n);

    /// dst[c * hop_n + r] = src[r * step + c] for r < row_n, c < column_n; column_n is a multiple
    /// of lane_n.
    void (*transpose_back)(float* dst, std::size_t hop_n, const float* src, std::size_t step,
                           std::size_t row_n, std::size_t column_n);

    /// dst[i] = src[i] / divisors[i].
    void (*divide)(float* dst, const float* src, const float* divisors, std::size_t n);
};

SORVO_DECLARE_KERNELS(OverlapKernels, overlap_kernels)

}  // namespace sorvo::audio
