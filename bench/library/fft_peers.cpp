#include "fft_peers.h"

#include <fftw3.h>
#include <kiss_fft.h>
#include <kiss_fftr.h>

#include "fftw_buffer.h"

namespace sorvo::bench {
namespace {

/// Bins above the Nyquist frequency from those below.
void mirror(float* __restrict spectrum, int n) {
    for (int k = n / 2 + 1; k < n; ++k) {
        spectrum[2 * k] = spectrum[2 * (n - k)];
        spectrum[2 * k + 1] = -spectrum[2 * (n - k) + 1];
    }
}

void widen(float* __restrict dst, const float* __restrict src, int n) {
    for (int i = 0; i < n; ++i) {
        dst[2 * i] = src[i];
        dst[2 * i + 1] = 0.0F;
    }
}

class FftwReal : public FullSpectrum {
  public:
    explicit FftwReal(int n) : n_(n) {
        const FftwBuffer in(n);
        const FftwBuffer out(2 * n);
        plan_.reset(fftwf_plan_dft_r2c_1d(n, in.data(), out.complex(), FFTW_MEASURE));
    }
    const char* name() const override { return "fftw:r2c-mirror"; }
    void run(float* dst, const float* src) override {
        fftwf_execute_dft_r2c(plan_.get(), const_cast<float*>(src),
                              reinterpret_cast<fftwf_complex*>(dst));
        mirror(dst, n_);
    }

  private:
    int n_;
    FftwPlan plan_;
};

/// Real samples as complex ones; transformed from a buffer, or where they were put.
class FftwComplex : public FullSpectrum {
  public:
    FftwComplex(int n, bool in_place) : n_(n), in_place_(in_place), in_(2 * n) {
        const FftwBuffer out(2 * n);
        plan_.reset(fftwf_plan_dft_1d(n, in_.complex(), in_place ? in_.complex() : out.complex(),
                                      FFTW_FORWARD, FFTW_MEASURE | FFTW_DESTROY_INPUT));
    }
    const char* name() const override { return in_place_ ? "fftw:c2c-in-place" : "fftw:c2c"; }
    void run(float* dst, const float* src) override {
        auto* const out = reinterpret_cast<fftwf_complex*>(dst);
        fftwf_complex* const in = in_place_ ? out : in_.complex();
        widen(reinterpret_cast<float*>(in), src, n_);
        fftwf_execute_dft(plan_.get(), in, out);
    }

  private:
    int n_;
    bool in_place_;
    FftwBuffer in_;
    FftwPlan plan_;
};

class Kiss : public FullSpectrum {
  public:
    explicit Kiss(int n)
        : n_(n),
          in_(2 * n),
          real_(n % 2 == 0 ? kiss_fftr_alloc(n, 0, nullptr, nullptr) : nullptr),
          complex_(n % 2 == 0 ? nullptr : kiss_fft_alloc(n, 0, nullptr, nullptr)) {}
    ~Kiss() override {
        kiss_fftr_free(real_);
        kiss_fft_free(complex_);
    }
    Kiss(const Kiss&) = delete;
    Kiss& operator=(const Kiss&) = delete;

    const char* name() const override { return "kissfft"; }
    void run(float* dst, const float* src) override {
        auto* const out = reinterpret_cast<kiss_fft_cpx*>(dst);
        if (real_ != nullptr) {
            kiss_fftr(real_, src, out);
            mirror(dst, n_);
        } else {
            widen(in_.data(), src, n_);
            kiss_fft(complex_, reinterpret_cast<const kiss_fft_cpx*>(in_.data()), out);
        }
    }

  private:
    int n_;
    FftwBuffer in_;
    kiss_fftr_cfg real_;
    kiss_fft_cfg complex_;
};

}  // namespace

std::vector<std::shared_ptr<FullSpectrum>> full_spectrum_peers(int n) {
    return {std::make_shared<FftwReal>(n), std::make_shared<FftwComplex>(n, false),
            std::make_shared<FftwComplex>(n, true), std::make_shared<Kiss>(n)};
}

}  // namespace sorvo::bench
