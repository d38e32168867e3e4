// Cache-sized blocks of frames around a batched transform: windowing into the block, and what is
// made of its spectra. Frames may go through a complex transform in pairs (one in the real part,
// one in the imaginary part), to be separated afterwards.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace sorvo::bench {

enum class Magnitude { complex, magnitude, power };

/// A row of a filter bank without its zeros.
struct MelBand {
    std::size_t first;
    std::vector<float> weights;
};

/// Short-time analysis with a Hann window of fft_n samples and reflected ends.
struct AnalysisTask {
    int sample_n;
    int frame_n;
    int fft_n;
    int hop_n;
    Magnitude magnitude;
    std::vector<MelBand> bands;  ///< none: a spectrogram [freq_n][frame_n][2]
};

/// The transforms of one block lie one after the other, or element by element side by side.
enum class Layout { consecutive, interleaved };

struct BlockShape {
    bool pairs;    ///< complex transforms of two frames; else real transforms of one
    int lane_n;    ///< transforms in a block: 8, 16 or 32
    Layout input;  ///< interleaved only for pairs
    Layout output;
};

/// Distance between consecutive real transforms' inputs and outputs: whole cache lines.
int real_distance(int fft_n);
int half_spectrum_distance(int fft_n);

std::vector<float> hann_window(int n);

/// Transposes rows x columns complex values; distances in complex values.
void transpose(float* dst, std::ptrdiff_t dst_distance, const float* src,
               std::ptrdiff_t src_distance, int rows, int columns);

/// Runs the task block by block; `transform` turns `in` into `out`. The last block is moved back to
/// end with the last frame, so that all are full.
class FrameBlocks {
  public:
    FrameBlocks(const AnalysisTask& task, const BlockShape& shape, float* in, float* out,
                std::function<void()> transform);
    void run(float* dst, const float* src);

  private:
    void load(const float* src, int t0);
    const float* frame(std::vector<float>& edge, const float* src, int t) const;
    template <int lane_n>
    void emit(float* dst, int t0);
    template <int lane_n, bool pairs, Magnitude magnitude, bool mel>
    void emit_bins(float* dst, int t0, const float* spectra);
    template <int lane_n>
    void project(float* dst, int t0) const;

    AnalysisTask task_;
    BlockShape shape_;
    float* in_;
    float* out_;
    std::function<void()> transform_;
    std::vector<float> window_;
    std::vector<float> edges_[2];
    std::vector<float> consecutive_;
    std::vector<float> interleaved_;
    std::vector<float> powers_;
};

}  // namespace sorvo::bench
