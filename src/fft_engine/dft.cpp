#include "fft_engine/dft.h"

#include <utility>

#include "fft_engine/scratch.h"
#include "fft_engine/twiddles.h"
#include "util/exceptions.h"

namespace sorvo::audio::kelpon::fft {

DFTImpl::DFTImpl(unsigned n, std::vector<std::complex<float>> w)
    : DFTImpl(n, n, std::move(w), 1.0F) {}

DFTImpl::DFTImpl(unsigned n, unsigned total, std::vector<std::complex<float>> w, float scale)
    : n_(n), total_(total), w_(std::move(w)), scale_(scale) {
    if (n == 0) throw SorvoInvalidArgument("Invalid n size.");
}

IDFTImpl::IDFTImpl(unsigned n, unsigned total, bool normalise)
    : DFTImpl(n, total, calcW(n, Direction::inverse),
              normalise ? 1.0F / static_cast<float>(n) : 1.0F) {}

template <class In>
void DFTImpl::run(std::complex<float>* out, const In* in) const {
    // Each output needs all of the input, which `out` may overwrite.
    float* const re = thread_scratch(2 * std::size_t{n_});
    float* const im = re + n_;
    for (std::size_t block = 0; block + n_ <= total_; block += n_) {
        for (std::size_t j = 0; j < n_; ++j) {
            const std::complex<float> value(in[block + j]);
            re[j] = value.real();
            im[j] = value.imag();
        }
        for (std::size_t k = 0; k < n_; ++k) {
            double sum_re = 0.0;
            double sum_im = 0.0;
            std::size_t angle = 0;
            for (std::size_t j = 0; j < n_; ++j) {
                const std::complex<double> w(w_[angle]);
                const auto x_re = static_cast<double>(re[j]);
                const auto x_im = static_cast<double>(im[j]);
                sum_re += x_re * w.real() - x_im * w.imag();
                sum_im += x_re * w.imag() + x_im * w.real();
                angle += k;
                if (angle >= n_) angle -= n_;
            }
            out[block + k] = {static_cast<float>(sum_re) * scale_,
                              static_cast<float>(sum_im) * scale_};
        }
    }
}

void DFTImpl::exec(const short* in, std::complex<float>* out) const {
    run(out, in);
}
void DFTImpl::exec(const float* in, std::complex<float>* out) const {
    run(out, in);
}
void DFTImpl::exec(const std::complex<float>* in, std::complex<float>* out) const {
    run(out, in);
}

}  // namespace sorvo::audio::kelpon::fft
