#include "api/call_frame.h"
#include "fft/one_fft.h"

using namespace sorvo::audio;
using namespace sorvo::audio::api;

int sorvoAudioFFT(float* dst, const float* src, int fft_n) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(fft_n >= 1, "Invalid fft_n size.");
        real_fft(dst, src, fft_n);
    });
}

int sorvoAudioIFFT(float* dst, const float* src, int fft_n) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(fft_n >= 1, "Invalid fft_n size.");
        complex_ifft(dst, src, fft_n);
    });
}
