#include <algorithm>
#include <vector>

#include "api/call_frame.h"
#include "stft/framing.h"
#include "stft/inverse_spectrogram.h"
#include "stft/spectrogram.h"
#include "stft/window_table.h"

using namespace sorvo::audio;
using namespace sorvo::audio::api;

int sorvoAudioGetWindow(float* dst, int window_n, int win_type) {
    if (any_null(dst)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(window_n >= 1, "Invalid window_n size.");
        require(is_one_of(win_type, {1, 2}), "Invalid win_type format.");
        const std::vector<float>& window = WindowTable::instance().ref_table(window_n, win_type);
        std::copy(window.begin(), window.end(), dst);
    });
}

int sorvoAudioGetFrameLen(int* frame_n, int sample_n, int fft_n, int hop_n, int center) {
    if (any_null(frame_n)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(sample_n > 0, "Invalid sample_n value.");
        require(fft_n > 0, "Invalid fft_n value.");
        require(hop_n >= 0, "Invalid hop_n value.");
        require(is_one_of(center, {0, 1, 2}), "Invalid center format.");
        *frame_n = get_frame_len(sample_n, fft_n, hop_n, center);
    });
}

int sorvoAudioGetSpectrogram(float* dst, const float* src, int sample_n, int fft_n, int hop_n,
                             int win_n, int win_type, int max_frame_n, int center, float power,
                             int norm_type) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(sample_n > 0, "Invalid sample_n size.");
        require(fft_n > 0, "Invalid fft_n value.");
        require(hop_n >= 0, "Invalid hop_n value.");
        require(win_n > 0, "Invalid win_n value.");
        require(is_one_of(win_type, {1, 2}), "Invalid win_type format.");
        require(max_frame_n > 0, "Invalid max_frame_n size.");
        require(is_one_of(center, {0, 1, 2}), "Invalid center format.");
        require(!(power < 0.0F), "Invalid power value.");  // NaN passes
        require(is_one_of(norm_type, {0, 1, 2}), "Invalid norm_type format.");
        spectrogram(dst, {src, sample_n}, {fft_n, hop_n, win_n, win_type, center, power, norm_type},
                    max_frame_n);
    });
}

int sorvoAudioGetInverseSpectrogram(float* dst, const float* src, int frame_n, int freq_n,
                                    int hop_n, int win_n, int win_type, int max_sample_n,
                                    int center, int norm_type) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(frame_n > 0, "Invalid frame_n size.");
        require(freq_n > 0, "Invalid freq_n value.");
        require(hop_n >= 0, "Invalid hop_n value.");
        require(win_n > 0, "Invalid win_n value.");
        require(is_one_of(win_type, {1, 2}), "Invalid win_type format.");
        require(max_sample_n > 0, "Invalid max_sample_n size.");
        require(is_one_of(center, {0, 1, 2}), "Invalid center format.");
        require(is_one_of(norm_type, {0, 1, 2}), "Invalid norm_type format.");
        inverse_spectrogram(dst, max_sample_n,
                            {src, frame_n, freq_n, hop_n, win_n, win_type, center, norm_type});
    });
}

int sorvoAudioGetSampleLen(int* sample_n, int frame_n, int freq_n, int hop_n, int center) {
    if (any_null(sample_n)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(frame_n > 0, "Invalid frame_n value.");
        require(freq_n > 0, "Invalid freq_n value");
        require(hop_n >= 0, "Invalid hop_n value.");
        require(is_one_of(center, {0, 1, 2}), "Invalid center format.");
        *sample_n = get_sample_len(frame_n, freq_n, hop_n, center != 0);
    });
}
