#pragma once

#include "fft_engine/fft_impl.h"
#include "fft_engine/mixed_radix.h"

namespace sorvo::audio::kelpon::fft {

/// Forward transform of any length by its factors. Prime factors too large for direct summation are
/// transformed by Bluestein's algorithm, so that the cost is O(n log n) for every length.
class CooleyTukeyFFTImpl : public FFTImpl {
  public:
    explicit CooleyTukeyFFTImpl(unsigned n, SimdLevel level = simd_level());

    void exec(const short* in, std::complex<float>* out) const override;
    void exec(const float* in, std::complex<float>* out) const override;
    void exec(const std::complex<float>* in, std::complex<float>* out) const override;

  protected:
    CooleyTukeyFFTImpl(unsigned n, SimdLevel level, bool inverse);

  private:
    MixedRadix stages_;
    bool inverse_;
    float scale_;
};

/// Inverse transform of any length by its factors, scaled by 1/n.
class CooleyTukeyIFFTImpl : public CooleyTukeyFFTImpl {
  public:
    explicit CooleyTukeyIFFTImpl(unsigned n, SimdLevel level = simd_level())
        : CooleyTukeyFFTImpl(n, level, true) {}
};

}  // namespace sorvo::audio::kelpon::fft
