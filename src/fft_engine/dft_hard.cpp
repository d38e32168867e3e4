#include "fft_engine/dft_hard.h"

#include "fft_engine/butterflies.h"
#include "util/exceptions.h"

namespace sorvo::audio::kelpon::fft {
namespace {

using namespace SORVO_LEVEL;

template <int n, Flavour flavour, class In>
void transform_blocks(const In* in, std::complex<float>* out, unsigned total) {
    constexpr bool inverse = flavour != Flavour::forward;
    constexpr float scale = flavour == Flavour::inverse_scaled ? 1.0F / n : 1.0F;
    for (unsigned block = 0; block + n <= total; block += n) {
        Complex<float> x[n];
        for (unsigned j = 0; j < n; ++j) {
            const std::complex<float> value(in[block + j]);
            x[j] = inverse ? Complex<float>{value.imag(), value.real()}
                           : Complex<float>{value.real(), value.imag()};
        }
        butterfly(x);
        for (unsigned k = 0; k < n; ++k) {
            out[block + k] = inverse ? std::complex<float>{x[k].im * scale, x[k].re * scale}
                                     : std::complex<float>{x[k].re, x[k].im};
        }
    }
}

template <Flavour flavour, class In>
HardKernel<In> choose_kernel(unsigned n) {
    switch (n) {
        case 1:
            return DFT_HARD_1<flavour, In>;
        case 2:
            return DFT_HARD_2<flavour, In>;
        case 3:
            return DFT_HARD_3<flavour, In>;
        case 4:
            return DFT_HARD_4<flavour, In>;
        case 5:
            return DFT_HARD_5<flavour, In>;
        default:
            throw SorvoInvalidArgument("Invalid n size.");
    }
}

template <class In>
HardKernel<In> choose_kernel(unsigned n, Flavour flavour) {
    switch (flavour) {
        case Flavour::inverse_scaled:
            return choose_kernel<Flavour::inverse_scaled, In>(n);
        case Flavour::inverse_unscaled:
            return choose_kernel<Flavour::inverse_unscaled, In>(n);
        default:
            return choose_kernel<Flavour::forward, In>(n);
    }
}

}  // namespace

template <Flavour flavour, class In>
void DFT_HARD_1(const In* in, std::complex<float>* out, unsigned total) {
    transform_blocks<1, flavour>(in, out, total);
}

template <Flavour flavour, class In>
void DFT_HARD_2(const In* in, std::complex<float>* out, unsigned total) {
    transform_blocks<2, flavour>(in, out, total);
}

template <Flavour flavour, class In>
void DFT_HARD_3(const In* in, std::complex<float>* out, unsigned total) {
    transform_blocks<3, flavour>(in, out, total);
}

template <Flavour flavour, class In>
void DFT_HARD_4(const In* in, std::complex<float>* out, unsigned total) {
    transform_blocks<4, flavour>(in, out, total);
}

template <Flavour flavour, class In>
void DFT_HARD_5(const In* in, std::complex<float>* out, unsigned total) {
    transform_blocks<5, flavour>(in, out, total);
}

DFTHARDImpl::DFTHARDImpl(unsigned n, unsigned total) : DFTHARDImpl(n, total, Flavour::forward) {}

DFTHARDImpl::DFTHARDImpl(unsigned n, unsigned total, Flavour flavour)
    : total_(total),
      short_kernel_(choose_kernel<short>(n, flavour)),
      float_kernel_(choose_kernel<float>(n, flavour)),
      complex_kernel_(choose_kernel<std::complex<float>>(n, flavour)) {}

void DFTHARDImpl::exec(const short* in, std::complex<float>* out) const {
    short_kernel_(in, out, total_);
}

void DFTHARDImpl::exec(const float* in, std::complex<float>* out) const {
    float_kernel_(in, out, total_);
}

void DFTHARDImpl::exec(const std::complex<float>* in, std::complex<float>* out) const {
    complex_kernel_(in, out, total_);
}

}  // namespace sorvo::audio::kelpon::fft
