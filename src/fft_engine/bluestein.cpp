#include "fft_engine/bluestein.h"

namespace sorvo::audio::kelpon::fft {

namespace {

constexpr unsigned max_short_n = 19;

}  // namespace

BluesteinFFTImpl::BluesteinFFTImpl(unsigned n, SimdLevel level)
    : n_(n),
      chirp_transform_(n, level),
      short_transform_(n <= max_short_n ? std::make_unique<MixedRadix>(n, level, nullptr)
                                        : nullptr) {}

template <class In>
void BluesteinFFTImpl::run(std::complex<float>* out, In in, const PlaneTable& closing_chirp,
                           bool inverse) const {
    if (short_transform_ != nullptr) {
        short_transform_->transform(out, in, inverse,
                                    inverse ? 1.0F / static_cast<float>(n_) : 1.0F,
                                    thread_scratch(short_transform_->scratch_floats()));
        return;
    }
    chirp_transform_.transform(out, in, closing_chirp, inverse,
                               thread_scratch(chirp_transform_.scratch_floats()));
}

void BluesteinFFTImpl::exec(const short* in, std::complex<float>* out) const {
    run(out, in, chirp_transform_.chirp(), false);
}

void BluesteinFFTImpl::exec(const float* in, std::complex<float>* out) const {
    run(out, in, chirp_transform_.chirp(), false);
}

void BluesteinFFTImpl::exec(const std::complex<float>* in, std::complex<float>* out) const {
    run(out, in, chirp_transform_.chirp(), false);
}

BluesteinIFFTImpl::BluesteinIFFTImpl(unsigned n, SimdLevel level)
    : BluesteinFFTImpl(n, level), scaled_chirp_(chirp_transform_.chirp()) {
    const float scale = 1.0F / static_cast<float>(n);
    for (float& value : scaled_chirp_.re) value *= scale;
    for (float& value : scaled_chirp_.im) value *= scale;
}

void BluesteinIFFTImpl::exec(const short* in, std::complex<float>* out) const {
    run(out, in, scaled_chirp_, inverse_);
}

void BluesteinIFFTImpl::exec(const float* in, std::complex<float>* out) const {
    run(out, in, scaled_chirp_, inverse_);
}

void BluesteinIFFTImpl::exec(const std::complex<float>* in, std::complex<float>* out) const {
    run(out, in, scaled_chirp_, inverse_);
}

}  // namespace sorvo::audio::kelpon::fft
