// Overlap-add synthesis of many frames side by side.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fft/plan_cache.h"
#include "stft/analysis.h"
#include "stft/overlap_kernels.h"
#include "stft/stft_core.h"
#include "util/workspace.h"

namespace sorvo::audio {

/// True where OverlapAdd is faster than one frame at a time.
bool batches_pay(const Synthesis& synthesis);

/// Goes once through the spectrogram. Sums are kept by residue of the hop, so that the samples of
/// many frames are added at once; what no later frame reaches is divided by the overlap-added
/// squared window and written. The storage does not grow with the signal.
class OverlapAdd {
  public:
    OverlapAdd(float* dst, int max_sample_n, const Synthesis& synthesis, SimdLevel level);
    OverlapAdd(const OverlapAdd&) = delete;
    OverlapAdd& operator=(const OverlapAdd&) = delete;

    /// The whole signal.
    void run();

  private:
    bool load(std::size_t t, std::size_t frame_n);
    void write_columns(std::size_t first, std::size_t column_n);
    void write_column(const float* column, const float* divisors, std::uint64_t begin);
    void sum_squares(float* divisors, std::size_t last, std::size_t first) const;
    void drop_columns(std::size_t column_n);
    std::size_t sums_step() const;
    std::size_t spectra_n() const;
    std::size_t work_n() const;

    float* dst_;
    int max_sample_n_;
    Synthesis synthesis_;
    const std::vector<float>& squares_window_;
    WindowSpan span_;
    PlanUse<FftPlan> plan_;
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
    SynthesisJob job_;
    Workspace workspace_;
    float* spectra_;
    float* sums_;
    float* linear_;
};

}  // namespace sorvo::audio
