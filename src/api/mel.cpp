#include <algorithm>
#include <vector>

#include "api/call_frame.h"
#include "mel/mel_conversion.h"
#include "mel/mel_spectrogram.h"
#include "mel/mfb_table.h"

using namespace sorvo::audio;
using namespace sorvo::audio::api;

int sorvoAudioGetFBMatrix(float* dst, int freq_n, float f_min, float f_max, int mel_n,
                          int sample_rate, int mel_norm, int mel_formula) {
    if (any_null(dst)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(freq_n >= 1, "Invalid freq_n value.");
        require(!(0.0F > f_min), "Invalid f_min value.");  // NaN passes this and the next two
        require(!(0.0F > f_max), "Invalid f_max value.");
        require(!(f_min >= f_max), "f_max must be greater than f_min.");
        require(mel_n >= 1, "Invalid mel_n size.");
        require(freq_n > mel_n, "mel_n must be lesser than freq_n.");
        require(sample_rate >= 1, "Invalid sample_rate value.");
        require(is_one_of(mel_norm, {0, 1}), "Invalid mel_norm format.");
        require(is_one_of(mel_formula, {1, 0}), "Invalid mel_formula format.");
        const std::vector<std::vector<float>>& bank = MFBTable::instance().ref_table(
            freq_n, f_min, f_max, mel_n, sample_rate, mel_norm, mel_formula != 0);
        float* row_dst = dst;
        for (const std::vector<float>& row : bank) {
            row_dst = std::copy(row.begin(), row.end(), row_dst);
        }
    });
}

int sorvoAudioGetMelSpectrogram(float* dst, const float* src, int sample_n, int sample_rate,
                                int fft_n, int hop_n, int win_n, int win_type, int max_frame_n,
                                int center, float power, int fft_norm_type, float f_min,
                                float f_max, int mel_n, int mel_norm, int mel_formula) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(sample_n >= 1, "Invalid sample_n size.");
        require(sample_rate >= 1, "Invalid sample_rate value.");
        require(fft_n >= 1, "Invalid fft_n value.");
        require(hop_n >= 0, "Invalid hop_n value.");
        require(win_n >= 1, "Invalid win_n value.");
        require(is_one_of(win_type, {1, 2}), "Invalid win_type format.");
        require(max_frame_n >= 1, "Invalid max_frame_n size.");
        require(is_one_of(center, {0, 1, 2}), "Invalid center format.");
        require(!(0.0F > power), "Invalid power value.");  // NaN passes, for the bounds too
        require(is_one_of(fft_norm_type, {0, 1, 2}), "Invalid fft_norm_type format.");
        require(!(0.0F > f_min), "Invalid f_min value.");
        require(!(0.0F > f_max), "Invalid f_max value.");
        require(!(f_min >= f_max), "f_max must be greater than f_min.");
        require(mel_n >= 1, "Invalid mel_n size.");
        require(fft_n / 2 >= mel_n, "mel_n must be lesser than freq_n( fft_n / 2 + 1).");
        require(is_one_of(mel_norm, {0, 1}), "Invalid mel_norm format.");
        require(is_one_of(mel_formula, {1, 0}), "Invalid mel_formula format.");
        mel_spectrogram(
            dst, {src, sample_n}, {fft_n, hop_n, win_n, win_type, center, power, fft_norm_type},
            {fft_n / 2 + 1, f_min, f_max, mel_n, sample_rate, mel_norm, mel_formula != 0},
            max_frame_n);
    });
}

int sorvoAudioConvertToMel(float* dst, const float* src, const float* fb, int freq_n, int frame_n,
                           int mel_n) {
    if (any_null(dst, src, fb)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(freq_n >= 1, "Invalid freq_n value.");
        require(mel_n >= 1, "Invalid mel_n size.");
        require(freq_n > mel_n, "mel_n must be lesser than freq_n.");
        require(frame_n >= 1, "Invalid frame_n value.");
        convert_freq_to_mel_2d(dst, src, fb, freq_n, frame_n, mel_n);
    });
}
