#include <cstddef>
#include <cstdint>

#include "api/call_frame.h"
#include "elementwise/decibel.h"
#include "elementwise/frame_length.h"
#include "elementwise/magphase.h"
#include "elementwise/nonsilent.h"
#include "elementwise/standardize.h"
#include "math/arrays.h"
#include "math/complex_norm.h"

using namespace sorvo::audio;
using namespace sorvo::audio::api;

int sorvoAudioComplexNorm(float* dst, const float* src, int src_n, float power) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(src_n > 0, "Invalid src_n size.");
        require(!(power <= 0.0F), "Invalid power value.");  // NaN passes
        complex_norm_1d_core(dst, src, src_n, power);
    });
}

int sorvoAudioMagPhase(float* mag_dst, float* phase_dst, const float* src, int freq_n, int frame_n,
                       int phase_form, float power) {
    if (any_null(mag_dst, phase_dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(freq_n >= 1, "Invalid freq_n value.");
        require(frame_n >= 1, "Invalid frame_n value.");
        require(!(power < 0.0F), "Invalid power value.");  // NaN passes, and 0 does here
        require(is_one_of(phase_form, {0, 1}), "Invalid phase_form format.");
        const std::size_t n = static_cast<std::size_t>(freq_n) * static_cast<std::size_t>(frame_n);
        magphase_1d_core(mag_dst, phase_dst, src, n, power, phase_form != 0);
    });
}

int sorvoAudioConvertPowerToDB(float* dst, const float* src, int src_n, float top_db) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(src_n > 0, "Invalid src_n size.");
        convert_power_to_db(dst, src, src_n, top_db);
    });
}

int sorvoAudioLog1p(float* dst, const float* src, int src_n) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(src_n > 0, "Invalid src_n size.");
        take_log1p(dst, src, static_cast<std::size_t>(src_n));
    });
}

int sorvoAudioStandardize(float* dst, const float* src, int src_n) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(src_n > 0, "Invalid src_n size.");
        standardize(dst, src, src_n);
    });
}

int sorvoAudioGetNonSilentPos(int* pos, int* len, const float* src, int sample_n, int win_n,
                              int hop_n, float thr_db) {
    if (any_null(pos, len, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(sample_n > 0, "Invalid sample_n size.");
        require(win_n > 0, "Invalid win_n value.");
        require(hop_n >= 0, "Invalid hop_n value.");
        require(!(thr_db < 0.0F), "Invalid thr_db value.");  // NaN passes
        detect_nonsilent_pos(pos, len, src, sample_n, win_n, hop_n, thr_db);
    });
}

int sorvoAudioFixFrameLen(float* dst, const float* src, int freq_n, int dst_frame_n,
                          int src_frame_n, float pad_value) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(freq_n > 0, "Invalid freq_n size.");
        require(dst_frame_n >= 1, "Invalid dst_frame_n size.");
        require(src_frame_n >= 1, "Invalid src_frame_n size.");
        fix_frame_len(dst, src, freq_n, dst_frame_n, src_frame_n, pad_value);
    });
}
