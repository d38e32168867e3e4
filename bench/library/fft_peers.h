// The full complex spectrum of a real signal, by other FFT libraries. Plans are made beforehand.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace sorvo::bench {

class FullSpectrum {
  public:
    virtual ~FullSpectrum() = default;
    virtual const char* name() const = 0;
    /// dst: n complex values; src: n real ones. Both start at a cache line.
    virtual void run(float* dst, const float* src) = 0;
};

std::vector<std::shared_ptr<FullSpectrum>> full_spectrum_peers(int n);

}  // namespace sorvo::bench
