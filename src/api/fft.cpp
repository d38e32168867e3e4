#include "fft/fft.h"

#include <algorithm>
#include <cstddef>

#include "api/call_frame.h"
#include "fft/fft_table.h"
#include "util/zeros.h"

using namespace sorvo::audio;
using namespace sorvo::audio::api;

int sorvoAudioFFT(float* dst, const float* src, int fft_n) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(fft_n >= 1, "Invalid fft_n size.");
        auto data = make_zeros<float>(2 * static_cast<std::uint64_t>(fft_n));
        fft_pre_process(data, src, fft_n);
        fft(data, fft_n, FftTable::instance().ref_table(fft_n));
        std::copy(data.begin(), data.end(), dst);
    });
}

int sorvoAudioIFFT(float* dst, const float* src, int fft_n) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(fft_n >= 1, "Invalid fft_n size.");
        auto data = make_zeros<float>(2 * static_cast<std::uint64_t>(fft_n));
        std::copy_n(src, data.size(), data.begin());
        ifft(data, fft_n, FftTable::instance().ref_inv_table(fft_n));
        std::copy(data.begin(), data.end(), dst);
    });
}
