#pragma once

#include <functional>

#include "fft_engine/fft_impl.h"

namespace sorvo::audio::kelpon::fft {

enum class Flavour { forward, inverse_scaled, inverse_unscaled };

// Transforms of 1 to 5 values without tables, of each block of that many values in `total`. `In` is
// short, float or std::complex<float>; the inverse is scaled by 1/n or not at all.

template <Flavour flavour, class In>
void DFT_HARD_1(const In* in, std::complex<float>* out, unsigned total);
template <Flavour flavour, class In>
void DFT_HARD_2(const In* in, std::complex<float>* out, unsigned total);
template <Flavour flavour, class In>
void DFT_HARD_3(const In* in, std::complex<float>* out, unsigned total);
template <Flavour flavour, class In>
void DFT_HARD_4(const In* in, std::complex<float>* out, unsigned total);
template <Flavour flavour, class In>
void DFT_HARD_5(const In* in, std::complex<float>* out, unsigned total);

template <class In>
using HardKernel = std::function<void(const In* in, std::complex<float>* out, unsigned total)>;

/// Forward transform of each n values (1 to 5) that follow one another in `total`.
class DFTHARDImpl : public FFTImpl {
  public:
    /// Throws SorvoInvalidArgument if there is no kernel for n.
    DFTHARDImpl(unsigned n, unsigned total);

    void exec(const short* in, std::complex<float>* out) const override;
    void exec(const float* in, std::complex<float>* out) const override;
    void exec(const std::complex<float>* in, std::complex<float>* out) const override;

  protected:
    DFTHARDImpl(unsigned n, unsigned total, Flavour flavour);

  private:
    unsigned total_;
    HardKernel<short> short_kernel_;
    HardKernel<float> float_kernel_;
    HardKernel<std::complex<float>> complex_kernel_;
};

/// The inverse, scaled by 1/n if `normalise`.
class IDFTHARDImpl : public DFTHARDImpl {
  public:
    IDFTHARDImpl(unsigned n, unsigned total, bool normalise)
        : DFTHARDImpl(n, total, normalise ? Flavour::inverse_scaled : Flavour::inverse_unscaled) {}
};

}  // namespace sorvo::audio::kelpon::fft
