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

/// True for the powers that the kernels make, as roots and squares. Others are raised from squares.
inline bool made_by_kernels(float power) {
    return power == 1.0F || power == 2.0F;
}

/// Makes the spectra of blocks of frames: bins 0 ... fft_n / 2, as stft_core makes them. The
/// storage does not grow with the signal.
class FrameSpectra {
  public:
    FrameSpectra(const FrameSource& source, const FftPlan& plan, const std::vector<float>& window,
                 int norm_type, FrameForm form, const FrameKernels& kernels);
    FrameSpectra(const FrameSpectra&) = delete;
    FrameSpectra& operator=(const FrameSpectra&) = delete;

    /// The most frames of a block.
    std::size_t block_n() const { return block_n_; }

    /// Loads the frames t ... t + n - 1. False if their samples are not finite or so large that a
    /// sum might overflow: what the kernels leave out would then count, and the frames have to be
    /// computed one by one.
    bool load(std::int64_t t, std::size_t n);

    /// The loaded frames from `first` on, in rows of row_n() floats, of which those past the last
    /// frame are unspecified: squares and roots [bin][row_n()], complex values
    /// [bin][re, im][row_n()]. See FrameKernels about the sign of a zero.
    float* rows(std::size_t first);
    const float* exact_rows(std::size_t first);
    std::size_t row_n() const { return job_.out_row; }

    /// The same values as re, im at dst[bin * dst_row + 2 * frame], of so many of the loaded frames
    /// as fill whole packs: returns how many.
    std::size_t write(float* dst, std::size_t dst_row);

  private:
    static std::size_t whole_packs(std::size_t frame_n);
    std::size_t transposed_row() const;
    std::size_t transposed_n() const;
    std::size_t work_n(const FftPlanView& plan) const;
    std::size_t out_n() const;
    void extend(std::int64_t t, std::int64_t first, std::size_t c, std::size_t c_end);
    FrameJob job_from(std::size_t first) const;

    FrameSource source_;
    const FrameKernels& kernels_;
    FrameForm form_;
    std::size_t rows_;     ///< of the transposed signal: the samples from frame to frame
    std::size_t overlap_;  ///< how many frames further on the samples of a frame reach
    std::size_t block_n_;
    std::size_t loaded_n_ = 0;
    float limit_;  ///< of |sample|
    std::vector<std::uint32_t> offsets_;
    std::vector<float> window_;
    std::vector<std::uint16_t> doubts_;
    std::vector<float> extended_;
    Workspace workspace_;
    float* transposed_;
    FrameJob job_;
};

}  // namespace sorvo::audio
