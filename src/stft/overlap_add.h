// Overlap-add synthesis of many frames side by side.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "stft/overlap_kernels.h"
#include "stft/stft_core.h"
#include "util/workspace.h"

namespace sorvo::audio {

/// A spectrogram, [freq_n][frame_n][2], and what of its signal is wanted.
struct SynthesisSource {
    const float* src;
    int frame_n;
    int freq_n;
    int hop_n;
    int max_sample_n;
    int center;
};

/// True where OverlapAdd is faster than one frame at a time.
bool lanes_pay(const SynthesisSource& source);

/// Goes once through the spectrogram. Sums are kept by residue of the hop, so that the samples of
/// many frames are added at once; what no later frame reaches is divided by the overlap-added
/// squared window and written. The storage does not grow with the signal.
class OverlapAdd {
  public:
    OverlapAdd(float* dst, const SynthesisSource& source, const FftPlan& plan,
               const std::vector<float>& window, float factor, const OverlapKernels& kernels);
    OverlapAdd(const OverlapAdd&) = delete;
    OverlapAdd& operator=(const OverlapAdd&) = delete;

    /// Frame t as interleaved complex samples, by the plain routine.
    using PlainFrame = std::function<const std::vector<float>&(std::size_t t)>;

    /// The whole signal. `plain_frame` makes the frames that are not finite or so large that a sum
    /// might overflow, where what the kernels leave out would count.
    void run(const PlainFrame& plain_frame);

  private:
    bool load(std::size_t t, std::size_t frame_n);
    void copy_plain_frames(const PlainFrame& plain_frame, std::size_t t, std::size_t frame_n);
    void write_columns(std::size_t first, std::size_t column_n);
    void write_column(const float* column, const float* divisors, std::uint64_t begin);
    void sum_squares(float* divisors, std::size_t last, std::size_t first) const;
    void drop_columns(std::size_t column_n);
    std::size_t sums_row() const;

    float* dst_;
    SynthesisSource source_;
    const std::vector<float>& squares_window_;
    WindowSpan span_;
    const OverlapKernels& kernels_;
    std::size_t fft_n_;
    std::size_t block_n_;
    std::size_t rows_;   ///< of the sums: the samples from frame to frame that any frame has
    std::size_t reach_;  ///< columns after its own into which a frame reaches
    std::uint64_t length_;
    std::uint64_t offset_;
    std::vector<float> window_;
    std::vector<float> steady_;  ///< divisors where all frames overlap that can
    std::vector<float> edge_;    ///< the divisors of a column near an end
    Workspace workspace_;
    float* spectra_;
    float* sums_;
    float* linear_;
    SynthesisJob job_;
};

}  // namespace sorvo::audio
