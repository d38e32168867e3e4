// Signals from complex spectrograms around other FFT libraries, as an expert would write them.
#pragma once

#include <memory>
#include <vector>

namespace sorvo::bench {

/// Overlap-add synthesis with a Hann window of fft_n samples; the first fft_n / 2 samples are
/// dropped.
struct SynthesisTask {
    int frame_n;
    int fft_n;
    int hop_n;
    int sample_n;
};

class Synthesis {
  public:
    virtual ~Synthesis() = default;
    virtual const char* name() const = 0;
    virtual void run(float* dst, const float* src) = 0;
};

/// FFTW with two frames per complex transform and with real transforms, each in the fastest of its
/// block shapes on this machine; KissFFT.
std::vector<std::shared_ptr<Synthesis>> synthesis_peers(const SynthesisTask& task);

}  // namespace sorvo::bench
