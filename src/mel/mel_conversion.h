#pragma once

#include <vector>

#include "mel/mel_kernels.h"

namespace sorvo::audio {

/// One spectrum to mel_n mel values: dst[m] = sum over k of fb[m][k] src[k], in the order of k from
/// 0.0f. `dst` holds mel_n elements.
void convert_freq_to_mel_1d(std::vector<float>& dst, const std::vector<float>& src,
                            const std::vector<std::vector<float>>& fb, int mel_n);

/// The band of a row of n weights. Anything but a zero counts, NaN too.
MelBand nonzero_band(const float* weights, std::size_t n);

/// A spectrogram src[k * frame_n + t] and a bank fb[m * freq_n + k] to dst[m * frame_n + t]; each
/// sum in the order of k from 0.0f.
void convert_freq_to_mel_2d(float* dst, const float* src, const float* fb, int freq_n, int frame_n,
                            int mel_n, SimdLevel level = simd_level());

}  // namespace sorvo::audio
