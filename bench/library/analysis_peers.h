// Spectrograms and mel spectrograms around other FFT libraries, as an expert would write them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "frame_blocks.h"

namespace sorvo::bench {

class Analysis {
  public:
    virtual ~Analysis() = default;
    virtual const char* name() const = 0;
    virtual void run(float* dst, const float* src) = 0;
};

/// FFTW with two frames per complex transform and with real transforms, each in the fastest of its
/// block shapes on this machine; KissFFT.
std::vector<std::shared_ptr<Analysis>> analysis_peers(const AnalysisTask& task);

}  // namespace sorvo::bench
