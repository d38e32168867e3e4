#include "api/call_frame.h"
#include "resample/resampler.h"

using namespace sorvo::audio;
using namespace sorvo::audio::api;

int sorvoAudioResample(float* dst, const float* src, int dst_sample_rate, int dst_n,
                       int src_sample_rate, int src_n) {
    if (any_null(dst, src)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(dst_sample_rate > 0, "Invalid dst_sample_rate value.");
        require(dst_n > 0, "Invalid dst_n size.");
        require(src_sample_rate > 0, "Invalid src_sample_rate value.");
        require(src_n > 0, "Invalid src_n size.");
        resample(dst, src, dst_sample_rate, dst_n, src_sample_rate, src_n);
    });
}

int sorvoAudioGetResampleLen(int* dst_sample_n, int dst_sample_rate, int src_sample_n,
                             int src_sample_rate) {
    if (any_null(dst_sample_n)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(dst_sample_rate > 0, "Invalid dst_sample_rate value.");
        require(src_sample_rate > 0, "Invalid src_sample_rate value.");
        require(src_sample_n > 0, "Invalid src_sample_n value.");
        *dst_sample_n = get_resample_len(dst_sample_rate, src_sample_n, src_sample_rate);
    });
}
