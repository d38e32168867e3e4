#include "api/call_frame.h"
#include "filter/filtfilt.h"
#include "filter/linerfilter.h"
#include "filter/zi_coef.h"

using namespace sorvo::audio;
using namespace sorvo::audio::api;

namespace {

/// A bad denominator count is reported with the wording of the numerator's.
void require_coefficient_counts(int n_coef_n, int d_coef_n) {
    require(n_coef_n > 0, "Invalid n_coef_n size.");
    require(d_coef_n > 0, "Invalid n_coef_n size.");
}

}  // namespace

int sorvoAudioLinerFilter(float* dst, const float* src, const float* n_coef, const float* d_coef,
                          float* zi, int dst_n, int src_n, int n_coef_n, int d_coef_n, int zi_n) {
    if (any_null(dst, src, n_coef, d_coef)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(dst_n > 0, "Invalid dst_n size.");
        require(src_n > 0, "Invalid src_n size.");
        require_coefficient_counts(n_coef_n, d_coef_n);
        linerfilter(dst, src, n_coef, d_coef, zi, dst_n, src_n, n_coef_n, d_coef_n, zi_n, false);
    });
}

int sorvoAudioGetLinerFilterZiCoef(float* dst, const float* n_coef, const float* d_coef, int dst_n,
                                   int n_coef_n, int d_coef_n) {
    if (any_null(dst, n_coef, d_coef)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(dst_n > 0, "Invalid dst_n size.");
        require_coefficient_counts(n_coef_n, d_coef_n);
        create_zi_coef(dst, n_coef, d_coef, dst_n, n_coef_n, d_coef_n);
    });
}

int sorvoAudioFilterFilter(float* dst, const float* src, const float* n_coef, const float* d_coef,
                           int dst_n, int src_n, int n_coef_n, int d_coef_n, int pad_type,
                           int pad_len) {
    if (any_null(dst, src, n_coef, d_coef)) {
        return SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return run([=] {
        require(dst_n > 0, "Invalid dst_n size.");
        require(src_n > 0, "Invalid src_n size.");
        require_coefficient_counts(n_coef_n, d_coef_n);
        require(is_one_of(pad_type, {0, 1, 2, 3}), "Invalid pad_type format.");
        require(pad_len >= 0, "Invalid pad_len value.");
        filtfilt(dst, src, n_coef, d_coef, dst_n, src_n, n_coef_n, d_coef_n, pad_type, pad_len);
    });
}
