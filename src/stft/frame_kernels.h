// The kernels that work on many frames side by side, a frame in each lane.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fft/fft_plan.h"
#include "simd/dispatch.h"
#include "stft/block_layout.h"

namespace sorvo::audio {

/// Frames to be transformed. Sample i of frame t is samples[offsets[i] + t].
struct FrameJob {
    FftPlanView plan;
    const float* samples;
    const std::uint32_t* offsets;
    const float* window;  ///< as long as a frame; zeros outside begin ... end - 1
    std::size_t begin;
    std::size_t end;
    float scale;
    float* out;  ///< rows of out_step floats, of which each frame has one, or two if interleaved
    std::size_t out_step;
    std::size_t frame_n;    ///< a multiple of lane_n
    float* work;            ///< 2 n, then plan.scratch_n floats a lane; aligned
    std::uint16_t* doubts;  ///< for roots: one a bin, a multiple of doubts_at_once; the rest is 0
};

/// Roots in doubt are looked for in so many bins at a time.
constexpr std::size_t doubts_at_once = 4;

/// What is made of a spectrum.
enum class FrameForm { squares, roots, complex_values };
constexpr int frame_form_n = 3;

using FrameKernel = void (*)(const FrameJob& job);

struct FrameKernels {
    std::size_t lane_n;

    /// dst[r * dst_step + c] = src[c * hop_n + r] for r < row_n, c < column_n; column_n >= 16. The
    /// result is the bit pattern of the largest magnitude, NaN being above infinity.
    std::uint32_t (*transpose)(float* dst, std::size_t dst_step, const float* src,
                               std::size_t hop_n, std::size_t row_n, std::size_t column_n);

    /// One kernel for each FrameForm: row k of `out` is the squared modulus of bin k, or its root;
    /// rows 2 k and 2 k + 1 are its real and its imaginary part, of which a zero may have the wrong
    /// sign where n is a power of two. Finite data of small magnitude only.
    FrameKernel rows[frame_form_n];
    /// The same values as re, im of frame after frame in row k; squares and roots have an im of 0.
    FrameKernel interleaved[frame_form_n];
    /// As `rows` for any data, with the right signs.
    FrameKernel literal_rows[frame_form_n];

    /// Brings rows into the second layout: rows 2 k and 2 k + 1, or row k alone. The first is true
    /// if there is a zero whose sign may be wrong: any but the imaginary parts of the bins 0 and n
    /// / 2, which are +0 for any signal.
    bool (*interleave)(const BinMove& move);
    void (*interleave_zeros)(const BinMove& move);
};

SORVO_DECLARE_KERNELS(FrameKernels, frame_kernels)

}  // namespace sorvo::audio
