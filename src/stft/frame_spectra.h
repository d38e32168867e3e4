// Spectra of a signal's frames, a block of frames at a time, many frames side by side.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fft/plan_cache.h"
#include "stft/analysis.h"
#include "stft/frame_kernels.h"
#include "util/workspace.h"

namespace sorvo::audio {

/// True where FrameSpectra is faster than one frame at a time.
bool batches_pay(const Analysis& analysis, int frame_n);

/// What the kernels make for a power: roots and squares for 1 and 2; any other is raised from
/// squares. Without a power (0 or NaN) it is the complex values.
FrameForm form_of(float power);
inline bool is_made_by_kernels(float power) {
    return power == 1.0F || power == 2.0F;
}

/// Makes the spectra of blocks of frames: bins 0 ... fft_n / 2, as stft_core makes them. The
/// storage does not grow with the signal.
class FrameSpectra {
  public:
    FrameSpectra(const Signal& signal, const Analysis& analysis, int frame_n, FrameForm form,
                 SimdLevel level);
    FrameSpectra(const FrameSpectra&) = delete;
    FrameSpectra& operator=(const FrameSpectra&) = delete;

    /// Loads block after block, and calls take(t, n) for the frames t ... t + n - 1 of each.
    template <class Take>
    void for_each_block(Take take) {
        const auto frame_n = static_cast<std::size_t>(frame_n_);
        for (std::size_t t = 0; t < frame_n; t += block_n_) {
            const std::size_t n = std::min(block_n_, frame_n - t);
            load(static_cast<std::int64_t>(t), n);
            take(t, n);
        }
    }

    /// The loaded frames from `first` on, in rows of row_n() floats, of which those past the last
    /// frame are unspecified: squares and roots [bin][row_n()], complex values
    /// [bin][re, im][row_n()].
    float* rows(std::size_t first);
    std::size_t row_n() const { return job_.out_step; }

    /// The same as re, im of the `count` frames from `first` on, at dst[bin * dst_step + 2 * i].
    void write(float* dst, std::size_t dst_step, std::size_t first, std::size_t count);

    /// Writes so many of the loaded frames as fill whole vectors right away, without rows in
    /// between; returns how many.
    std::size_t write_right_away(float* dst, std::size_t dst_step);

    /// True if the loaded samples are finite and so small that no sum and no square overflows.
    bool is_finite() const { return finite_; }

  private:
    static std::size_t whole_vectors(std::size_t frame_n);
    std::size_t transposed_step() const;
    std::size_t transposed_n() const;
    std::size_t work_n() const;
    std::size_t out_n() const;
    void load(std::int64_t t, std::size_t n);
    void extend(std::int64_t t, std::int64_t first, std::size_t c, std::size_t c_end);
    FrameJob job_from(std::size_t first) const;

    Signal signal_;
    Analysis analysis_;
    int frame_n_;
    PlanUse<FftPlan> plan_;
    const FrameKernels& kernels_;
    FrameForm form_;
    std::size_t rows_;     ///< of the transposed signal: the samples from frame to frame
    std::size_t overlap_;  ///< how many frames further on the samples of a frame reach
    std::size_t block_n_;
    std::size_t loaded_n_ = 0;
    float limit_;  ///< of |sample|
    bool finite_ = true;
    std::vector<std::uint32_t> offsets_;
    std::vector<float> window_;
    std::vector<std::uint16_t> doubts_;
    std::vector<float> extended_;
    Workspace workspace_;
    float* transposed_;
    FrameJob job_;
};

}  // namespace sorvo::audio
