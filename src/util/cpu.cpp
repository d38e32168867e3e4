#include "util/cpu.h"

namespace sorvo::audio {

bool cpu_supports(CpuLevel level) {
    switch (level) {
        case CpuLevel::avx512:
            return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                   __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
        case CpuLevel::avx2:
            return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
        case CpuLevel::baseline:
            break;
    }
    return true;
}

CpuLevel cpu_level() {
    static const CpuLevel level = cpu_supports(CpuLevel::avx512) ? CpuLevel::avx512
                                  : cpu_supports(CpuLevel::avx2) ? CpuLevel::avx2
                                                                 : CpuLevel::baseline;
    return level;
}

}  // namespace sorvo::audio
