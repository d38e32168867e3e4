#include "fft_engine/cooley_tukey.h"

#include "fft_engine/chirp_transform.h"

namespace sorvo::audio::kelpon::fft {

CooleyTukeyFFTImpl::CooleyTukeyFFTImpl(unsigned n, SimdLevel level)
    : CooleyTukeyFFTImpl(n, level, false) {}

CooleyTukeyFFTImpl::CooleyTukeyFFTImpl(unsigned n, SimdLevel level, bool inverse)
    : stages_(n, level,
              [level](unsigned factor) { return std::make_unique<ChirpTransform>(factor, level); }),
      inverse_(inverse),
      scale_(inverse ? 1.0F / static_cast<float>(n) : 1.0F) {}

void CooleyTukeyFFTImpl::exec(const short* in, std::complex<float>* out) const {
    stages_.transform(out, in, inverse_, scale_, thread_scratch(stages_.scratch_floats()));
}

void CooleyTukeyFFTImpl::exec(const float* in, std::complex<float>* out) const {
    stages_.transform(out, in, inverse_, scale_, thread_scratch(stages_.scratch_floats()));
}

void CooleyTukeyFFTImpl::exec(const std::complex<float>* in, std::complex<float>* out) const {
    stages_.transform(out, in, inverse_, scale_, thread_scratch(stages_.scratch_floats()));
}

}  // namespace sorvo::audio::kelpon::fft
