#pragma once

#include <complex>

namespace sorvo::audio::kelpon::fft {

enum FFTAlgorithm : int { radix2 = 0, cooley_tukey = 1, bluestein = 2, direct_dft = 3 };

/// One transform of one length and direction. An implementation never changes after it was built,
/// and works on memory of the calling thread: any number of threads may execute it at once.
class FFTImpl {
  public:
    FFTImpl() = default;
    FFTImpl(const FFTImpl&) = delete;
    FFTImpl& operator=(const FFTImpl&) = delete;
    virtual ~FFTImpl() = default;

    /// Real input is taken as complex with imaginary part 0. Complex input may be `out` itself.
    virtual void exec(const short* in, std::complex<float>* out) const = 0;
    virtual void exec(const float* in, std::complex<float>* out) const = 0;
    virtual void exec(const std::complex<float>* in, std::complex<float>* out) const = 0;
};

}  // namespace sorvo::audio::kelpon::fft
