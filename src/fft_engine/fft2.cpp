#include "fft_engine/fft2.h"

#include "fft_engine/primes.h"
#include "util/exceptions.h"

namespace sorvo::audio::kelpon::fft {
namespace {

unsigned checked_length(unsigned n) {
    if (!is_power_of_two(n)) throw SorvoInvalidArgument("Invalid n size.");
    return n;
}

}  // namespace

FFT2Impl::FFT2Impl(unsigned n, SimdLevel level) : FFT2Impl(n, level, false) {}

FFT2Impl::FFT2Impl(unsigned n, SimdLevel level, bool inverse)
    : stages_(checked_length(n), level, nullptr),
      inverse_(inverse),
      scale_(inverse ? 1.0F / static_cast<float>(n) : 1.0F) {}

void FFT2Impl::exec(const short* in, std::complex<float>* out) const {
    stages_.transform(out, in, inverse_, scale_, thread_scratch(scratch_floats()));
}

void FFT2Impl::exec(const float* in, std::complex<float>* out) const {
    stages_.transform(out, in, inverse_, scale_, thread_scratch(scratch_floats()));
}

void FFT2Impl::exec(const std::complex<float>* in, std::complex<float>* out) const {
    stages_.transform(out, in, inverse_, scale_, thread_scratch(scratch_floats()));
}

void FFT2Impl::transform(Planes out, ConstPlanes in, float* scratch) const {
    stages_.transform(out, in, inverse_, 1.0F, scratch);
}

}  // namespace sorvo::audio::kelpon::fft
