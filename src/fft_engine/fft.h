#pragma once

#include <complex>
#include <memory>

#include "fft_engine/fft_impl.h"

namespace sorvo::audio::kelpon {

/// A plan for the discrete Fourier transform of one length and direction:
///
///     forward  out[k] =       sum over j of in[j] * exp(-2 pi i j k / n)
///     inverse  out[j] = 1/n * sum over k of in[k] * exp(+2 pi i j k / n)
///
/// Every inverse is scaled by 1/n, whatever the algorithm, so that inverse(forward(x)) = x. A plan
/// may be executed from several threads at once; `init` may not run at the same time. The first
/// execution in a thread, and one of a longer plan than before, allocates working storage, which
/// the thread keeps; later ones allocate nothing.
class FFT {
  public:
    /// Chooses the algorithm: hard-coded kernels below 6, radix-2 for a power of two, Bluestein for
    /// a prime, Cooley-Tukey for any other length. Throws SorvoInvalidArgument if n is 0.
    FFT(unsigned n, bool forward);
    FFT(unsigned n, bool forward, fft::FFTAlgorithm algorithm);
    FFT(const FFT&) = default;
    FFT& operator=(const FFT&) = default;
    virtual ~FFT() = default;

    /// Plans anew. Throws SorvoInvalidArgument, and leaves the plan as it was, if n is 0 or not a
    /// power of two for radix-2. Any value that is not an algorithm is the direct DFT.
    void init(unsigned n, bool forward, fft::FFTAlgorithm algorithm);

    /// Transforms n values; complex input may be `out` itself.
    void exec(const short* in, std::complex<float>* out) const { impl_->exec(in, out); }
    void exec(const float* in, std::complex<float>* out) const { impl_->exec(in, out); }
    void exec(const std::complex<float>* in, std::complex<float>* out) const {
        impl_->exec(in, out);
    }

  private:
    std::shared_ptr<fft::FFTImpl> impl_;
};

}  // namespace sorvo::audio::kelpon
