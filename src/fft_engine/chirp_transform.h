#pragma once

#include <cstddef>

#include "fft_engine/fft2.h"
#include "fft_engine/kernels.h"
#include "fft_engine/mixed_radix.h"
#include "fft_engine/scratch.h"

namespace sorvo::audio::kelpon::fft {

/// A complex table in planes, padded with zeros to a multiple of 16 values.
struct PlaneTable {
    explicit PlaneTable(std::size_t n) : re(round_up_to_lanes(n)), im(round_up_to_lanes(n)) {}
    Planes planes() { return {re.data(), im.data()}; }
    ConstPlanes planes() const { return {re.data(), im.data()}; }

    AlignedFloats re;
    AlignedFloats im;
};

/// The smallest power of two that is at least 2n - 1: long enough for a circular convolution to
/// hold a linear one. Throws SorvoInvalidArgument if n is 0 or the length does not fit.
unsigned convolution_length(unsigned n);

/// Bluestein's algorithm: jk = (j^2 + k^2 - (k - j)^2) / 2 turns a transform of any length n into a
/// convolution with a chirp, which transforms of a power of two compute.
class ChirpTransform : public LineTransform {
  public:
    ChirpTransform(unsigned n, SimdLevel level);

    void transform(Planes line, float* scratch) const override;
    std::size_t scratch_floats() const override;

    /// out[k] = closing_chirp[k] * sum over j of in[j] * chirp[j] * conj(chirp[k - j]); the
    /// transform is the one whose closing chirp is `chirp()`. With `inverse` the inverse transform.
    template <class Out, class In>
    void transform(Out out, In in, const PlaneTable& closing_chirp, bool inverse,
                   float* scratch) const;

    const PlaneTable& chirp() const { return chirp_; }

  private:
    unsigned n_;
    unsigned convolution_n_;
    const Kernels& kernels_;
    PlaneTable chirp_;
    FFT2Impl forward_;
    IFFT2Impl inverse_;
    PlaneTable spectrum_;  ///< of the conjugate chirp, divided by the length of the convolution
};

}  // namespace sorvo::audio::kelpon::fft
