#pragma once

#include <memory>

#include "fft_engine/chirp_transform.h"
#include "fft_engine/fft_impl.h"

namespace sorvo::audio::kelpon::fft {

/// Forward transform of any length, meant for primes, by Bluestein's algorithm; of short lengths,
/// for which a convolution costs more, by direct summation.
class BluesteinFFTImpl : public FFTImpl {
  public:
    explicit BluesteinFFTImpl(unsigned n, SimdLevel level = simd_level());

    void exec(const short* in, std::complex<float>* out) const override;
    void exec(const float* in, std::complex<float>* out) const override;
    void exec(const std::complex<float>* in, std::complex<float>* out) const override;

  protected:
    template <class In>
    void run(std::complex<float>* out, In in, const PlaneTable& closing_chirp, bool inverse) const;

    unsigned n_;
    ChirpTransform chirp_transform_;
    std::unique_ptr<const MixedRadix> short_transform_;  ///< null for other lengths
};

/// Inverse transform of any length by Bluestein's algorithm, scaled by 1/n.
class BluesteinIFFTImpl : public BluesteinFFTImpl {
  public:
    explicit BluesteinIFFTImpl(unsigned n, SimdLevel level = simd_level());

    void exec(const short* in, std::complex<float>* out) const override;
    void exec(const float* in, std::complex<float>* out) const override;
    void exec(const std::complex<float>* in, std::complex<float>* out) const override;

  private:
    PlaneTable scaled_chirp_;  ///< the closing chirp with the factor 1/n
    bool inverse_ = true;
};

}  // namespace sorvo::audio::kelpon::fft
