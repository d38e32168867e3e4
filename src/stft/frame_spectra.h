// Spectra of a signal's frames, a block of frames at a time, many frames side by side.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "stft/frame_kernels.h"
#include "util/workspace.h"

namespace sorvo::audio {

/// A signal and how it is cut into frames.
struct FrameSource {
    const float* src;
    int sample_n;
    int fft_n;
    int hop_n;
    int center;
    int frame_n;
};

/// True where FrameSpectra is faster than one frame at a time.
bool lanes_pay(const FrameSource& source);

/// Holds the spectra of block_n() frames: bins 0 ... fft_n / 2, as stft_core makes them. The
/// storage does not grow with the signal.
class FrameSpectra {
  public:
    enum class Form { squares, complex_values };

    FrameSpectra(const FrameSource& source, const FftPlan& plan, const std::vector<float>& window,
                 int norm_type, Form form, const FrameKernels& kernels);
    FrameSpectra(const FrameSpectra&) = delete;
    FrameSpectra& operator=(const FrameSpectra&) = delete;

    std::size_t block_n() const { return job_.frame_n; }
    /// Distance of two rows of results, of which the first block_n() values count.
    std::size_t row_n() const { return job_.out_row; }

    /// Loads the frames t ... t + block_n() - 1; those past the last are unspecified. False if
    /// their samples are not finite or so large that a sum might overflow: what the kernels leave
    /// out would then count, and the frames have to be computed one by one.
    bool load(std::int64_t t);

    /// Form::squares: squared moduli of the loaded frames, [bin][row_n()].
    float* squares();
    /// Form::complex_values: [bin][re, im][row_n()]; see FrameKernels about the sign of a zero.
    const float* spectra();
    const float* exact_spectra();

  private:
    std::size_t transposed_n() const;
    std::size_t work_n(const FftPlanView& plan) const;
    std::size_t out_n(Form form) const;
    void extend(std::int64_t t, std::int64_t first);

    FrameSource source_;
    const FrameKernels& kernels_;
    std::size_t rows_;     ///< of the transposed signal: the samples from frame to frame
    std::size_t columns_;  ///< the frames of the block and those into which their samples reach
    float limit_;          ///< of |sample|
    std::vector<std::uint32_t> offsets_;
    std::vector<float> window_;
    std::vector<float> extended_;
    Workspace workspace_;
    float* transposed_;
    FrameJob job_;
};

}  // namespace sorvo::audio
