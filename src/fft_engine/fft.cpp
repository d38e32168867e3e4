#include "fft_engine/fft.h"

#include "fft_engine/bluestein.h"
#include "fft_engine/cooley_tukey.h"
#include "fft_engine/dft.h"
#include "fft_engine/dft_hard.h"
#include "fft_engine/fft2.h"
#include "fft_engine/primes.h"
#include "fft_engine/twiddles.h"

namespace sorvo::audio::kelpon {
namespace {

fft::FFTAlgorithm choose_algorithm(unsigned n) {
    if (n < 6) return fft::direct_dft;
    if (fft::is_power_of_two(n)) return fft::radix2;
    return fft::sieve_primes(n)[n] ? fft::bluestein : fft::cooley_tukey;
}

std::shared_ptr<fft::FFTImpl> make_forward(unsigned n, fft::FFTAlgorithm algorithm) {
    switch (algorithm) {
        case fft::radix2:
            return std::make_shared<fft::FFT2Impl>(n);
        case fft::cooley_tukey:
            return std::make_shared<fft::CooleyTukeyFFTImpl>(n);
        case fft::bluestein:
            return std::make_shared<fft::BluesteinFFTImpl>(n);
        default:
            if (n <= 5) return std::make_shared<fft::DFTHARDImpl>(n, n);
            return std::make_shared<fft::DFTImpl>(n, fft::calcW(n));
    }
}

std::shared_ptr<fft::FFTImpl> make_inverse(unsigned n, fft::FFTAlgorithm algorithm) {
    switch (algorithm) {
        case fft::radix2:
            return std::make_shared<fft::IFFT2Impl>(n);
        case fft::cooley_tukey:
            return std::make_shared<fft::CooleyTukeyIFFTImpl>(n);
        case fft::bluestein:
            return std::make_shared<fft::BluesteinIFFTImpl>(n);
        default:
            if (n <= 5) return std::make_shared<fft::IDFTHARDImpl>(n, n, true);
            return std::make_shared<fft::IDFTImpl>(n, n, true);
    }
}

}  // namespace

FFT::FFT(unsigned n, bool forward) {
    init(n, forward, choose_algorithm(n));
}

FFT::FFT(unsigned n, bool forward, fft::FFTAlgorithm algorithm) {
    init(n, forward, algorithm);
}

void FFT::init(unsigned n, bool forward, fft::FFTAlgorithm algorithm) {
    impl_ = forward ? make_forward(n, algorithm) : make_inverse(n, algorithm);
}

}  // namespace sorvo::audio::kelpon
