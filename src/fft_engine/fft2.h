#pragma once

#include "fft_engine/fft_impl.h"
#include "fft_engine/mixed_radix.h"

namespace sorvo::audio::kelpon::fft {

/// Forward transform of a power of two.
class FFT2Impl : public FFTImpl {
  public:
    /// Throws SorvoInvalidArgument if n is not a power of two.
    explicit FFT2Impl(unsigned n, SimdLevel level = simd_level());

    void exec(const short* in, std::complex<float>* out) const override;
    void exec(const float* in, std::complex<float>* out) const override;
    void exec(const std::complex<float>* in, std::complex<float>* out) const override;

    /// On planes, not scaled in either direction.
    void transform(Planes out, ConstPlanes in, float* scratch) const;
    std::size_t scratch_floats() const { return stages_.scratch_floats(); }

  protected:
    FFT2Impl(unsigned n, SimdLevel level, bool inverse);

  private:
    MixedRadix stages_;
    bool inverse_;
    float scale_;
};

/// Inverse transform of a power of two, scaled by 1/n.
class IFFT2Impl : public FFT2Impl {
  public:
    explicit IFFT2Impl(unsigned n, SimdLevel level = simd_level()) : FFT2Impl(n, level, true) {}
};

}  // namespace sorvo::audio::kelpon::fft
