#include "fft_engine/chirp_transform.h"

#include <algorithm>
#include <complex>
#include <cstdint>
#include <vector>

#include "fft_engine/primes.h"
#include "fft_engine/twiddles.h"
#include "util/exceptions.h"

namespace sorvo::audio::kelpon::fft {

unsigned convolution_length(unsigned n) {
    if (n == 0) throw SorvoInvalidArgument("Invalid n size.");
    std::uint64_t length = 1;
    while (length < 2 * std::uint64_t{n} - 1) length *= 2;
    if (length > UINT32_MAX) throw SorvoInvalidArgument("Invalid n size.");
    return static_cast<unsigned>(length);
}

ChirpTransform::ChirpTransform(unsigned n, SimdLevel level)
    : n_(n),
      convolution_n_(convolution_length(n)),
      kernels_(kernels(level)),
      chirp_(n),
      forward_(convolution_n_, level),
      inverse_(convolution_n_, level),
      spectrum_(convolution_n_) {
    const std::vector<std::complex<float>> chirp = calc_chirp(n);
    const float scale = 1.0F / static_cast<float>(convolution_n_);
    PlaneTable response(convolution_n_);
    for (std::size_t k = 0; k < n; ++k) {
        chirp_.re[k] = chirp[k].real();
        chirp_.im[k] = chirp[k].imag();
        for (const std::size_t at : {k, (std::size_t{convolution_n_} - k) % convolution_n_}) {
            response.re[at] = chirp[k].real() * scale;
            response.im[at] = -chirp[k].imag() * scale;
        }
    }
    AlignedFloats scratch(forward_.scratch_floats());
    forward_.transform(spectrum_.planes(), response.planes(), scratch.data());
}

std::size_t ChirpTransform::scratch_floats() const {
    return 2 * round_up_to_lanes(convolution_n_) + forward_.scratch_floats();
}

void ChirpTransform::transform(Planes line, float* scratch) const {
    transform(line, ConstPlanes(line), chirp_, false, scratch);
}

template <class Out, class In>
void ChirpTransform::transform(Out out, In in, const PlaneTable& closing_chirp, bool inverse,
                               float* scratch) const {
    const std::size_t padded_n = round_up_to_lanes(convolution_n_);
    const Planes work = {scratch, scratch + padded_n};
    float* const fft_scratch = scratch + 2 * padded_n;

    std::get<InputKernels<In>>(kernels_.input)
        .multiply_chirp(work, in, chirp_.planes(), n_, inverse);
    const std::size_t filled_n = std::min(round_up_to_lanes(n_), padded_n);
    std::fill(work.re + filled_n, work.re + padded_n, 0.0F);
    std::fill(work.im + filled_n, work.im + padded_n, 0.0F);
    forward_.transform(work, work, fft_scratch);
    kernels_.multiply(work, work, spectrum_.planes(), padded_n);
    inverse_.transform(work, work, fft_scratch);
    std::get<OutputKernels<Out>>(kernels_.output)
        .multiply_chirp(out, work, closing_chirp.planes(), n_, inverse);
}

template void ChirpTransform::transform(std::complex<float>*, const short*, const PlaneTable&, bool,
                                        float*) const;
template void ChirpTransform::transform(std::complex<float>*, const float*, const PlaneTable&, bool,
                                        float*) const;
template void ChirpTransform::transform(std::complex<float>*, const std::complex<float>*,
                                        const PlaneTable&, bool, float*) const;

}  // namespace sorvo::audio::kelpon::fft
