#include "simd/level.h"

namespace sorvo::audio {

std::vector<SimdLevel> all_simd_levels() {
#define SORVO_LIST(level, ...) SimdLevel::level,
    return {SORVO_SIMD_LEVELS(SORVO_LIST, )};
#undef SORVO_LIST
}

const char* simd_level_name(SimdLevel level) {
    switch (level) {
#define SORVO_NAME(name, ...) \
    case SimdLevel::name:     \
        return #name;
        SORVO_SIMD_LEVELS(SORVO_NAME, )
#undef SORVO_NAME
    }
    return "";
}

#if defined(__x86_64__) && !defined(SORVO_AUDIO_GENERIC)

bool is_supported(SimdLevel level) {
    switch (level) {
        case SimdLevel::avx512:
            return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                   __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
        case SimdLevel::avx2:
            return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
        case SimdLevel::sse2:
            break;
    }
    return true;
}

#else

// The one level of such a target is what the target requires.
bool is_supported(SimdLevel /*level*/) {
    return true;
}

#endif

SimdLevel simd_level() {
    SimdLevel highest{};
#define SORVO_SEEK(level, ...) \
    highest = is_supported(SimdLevel::level) ? SimdLevel::level : highest;
    SORVO_SIMD_LEVELS(SORVO_SEEK, )
#undef SORVO_SEEK
    return highest;
}

}  // namespace sorvo::audio
