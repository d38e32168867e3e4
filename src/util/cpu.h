// Which vector instructions the processor has. Kernels are compiled once per level and chosen by
// this alone; results do not depend on the level.
#pragma once

#include <array>

namespace sorvo::audio {

/// baseline is SSE2, avx2 includes FMA, avx512 is F, BW, DQ and VL.
enum class CpuLevel { baseline, avx2, avx512 };

constexpr std::array<CpuLevel, 3> all_cpu_levels = {CpuLevel::baseline, CpuLevel::avx2,
                                                    CpuLevel::avx512};

bool cpu_supports(CpuLevel level);

/// The highest supported level; decided once.
CpuLevel cpu_level();

/// Of the same kernels compiled for each level, those for this one.
template <class Kernels>
const Kernels& for_level(CpuLevel level, const Kernels& baseline, const Kernels& avx2,
                         const Kernels& avx512) {
    switch (level) {
        case CpuLevel::avx512:
            return avx512;
        case CpuLevel::avx2:
            return avx2;
        case CpuLevel::baseline:
            break;
    }
    return baseline;
}

}  // namespace sorvo::audio
