#pragma once

#include "simd/level.h"

namespace sorvo::audio {

/// Samples that a conversion produces: ceil(dst_sample_rate / src_sample_rate * src_sample_n), the
/// division first. Throws std::overflow_error where that does not fit an int.
int get_resample_len(int dst_sample_rate, int src_sample_n, int src_sample_rate);

/// Converts src_n samples by polyphase interpolation and fills dst with dst_n samples: those that
/// the conversion produces, then zeros. The scan stops one position before the window would reach
/// its last place over the zero-padded signal, so the end of the output is zero too.
void resample(float* dst, const float* src, int dst_sample_rate, int dst_n, int src_sample_rate,
              int src_n, SimdLevel level = simd_level());

/// The same, output by output: the definition.
void resample_plain(float* dst, const float* src, int dst_sample_rate, int dst_n,
                    int src_sample_rate, int src_n);

}  // namespace sorvo::audio
