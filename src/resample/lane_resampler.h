#pragma once

#include <cstddef>

#include "resample/tap_groups.h"
#include "simd/level.h"

namespace sorvo::audio {

/// The first dst_n outputs of the conversion of src_n samples, all of which must exist, computed
/// side by side for 16 chunks of the signal: the same bits as one after the other. Works in some
/// 150 KiB, whatever the length.
void resample_lanes(float* dst, const float* src, std::size_t dst_n, std::size_t src_n,
                    const TapGroups& table, SimdLevel level);

}  // namespace sorvo::audio
