// The library's operations one result at a time, in scalar code: what each kernel is measured
// against, beside the peers. Frame pipelines are made of the library's own single-frame operations.
#pragma once

#include <vector>

namespace sorvo::bench {

/// Parameters of short-time analysis with a Hann window of fft_n samples.
struct FrameParam {
    int sample_rate;
    int fft_n;
    int hop_n;
    float power;
    int mel_n;     ///< 0: spectrogram only
    bool centred;  ///< with reflected ends
};

void plain_fft(float* dst, const float* src, int fft_n);
void plain_spectrogram(float* dst, const float* src, int sample_n, int frame_n,
                       const FrameParam& param);
void plain_mel(float* dst, const float* src, int sample_n, int frame_n, const FrameParam& param);
void plain_inverse(float* dst, const float* src, int frame_n, int sample_n,
                   const FrameParam& param);
void plain_resample(float* dst, const float* src, int dst_rate, int dst_n, int src_rate, int src_n);

/// From rest.
void plain_filter(float* dst, const float* src, int n, const std::vector<float>& b,
                  const std::vector<float>& a);
/// Odd extension by three times the longer coefficient list.
void plain_filtfilt(float* dst, const float* src, int n, const std::vector<float>& b,
                    const std::vector<float>& a);

void plain_complex_norm(float* dst, const float* src, int n, float power);
/// At most 80 dB below the maximum.
void plain_decibels(float* dst, const float* src, int n);
void plain_log1p(float* dst, const float* src, int n);
/// Magnitudes, then phases: angles or unit numbers.
void plain_mag_phase(float* dst, const float* src, int n, bool unit);
void plain_standardize(float* dst, const float* src, int n);

}  // namespace sorvo::bench
