#pragma once

#include <vector>

#include "fft_engine/fft_impl.h"

namespace sorvo::audio::kelpon::fft {

/// Forward transform by its definition, O(n^2), with sums in double. Throws
/// SorvoInvalidArgument if n is 0.
class DFTImpl : public FFTImpl {
  public:
    /// `w` holds exp(-2 pi i k / n) for k below n.
    DFTImpl(unsigned n, std::vector<std::complex<float>> w);

    void exec(const short* in, std::complex<float>* out) const override;
    void exec(const float* in, std::complex<float>* out) const override;
    void exec(const std::complex<float>* in, std::complex<float>* out) const override;

  protected:
    DFTImpl(unsigned n, unsigned total, std::vector<std::complex<float>> w, float scale);

  private:
    template <class In>
    void run(std::complex<float>* out, const In* in) const;

    unsigned n_;
    unsigned total_;
    std::vector<std::complex<float>> w_;
    float scale_;
};

/// Inverse transform by its definition, of each n values that follow one another in `total`.
class IDFTImpl : public DFTImpl {
  public:
    /// Scaled by 1/n if `normalise`.
    IDFTImpl(unsigned n, unsigned total, bool normalise);
};

}  // namespace sorvo::audio::kelpon::fft
