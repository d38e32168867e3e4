// How the rest of the library gets at kernels.
#pragma once

#include "simd/level.h"

/// Declares the kernels of a room: the constant `name` of type Table in the namespace of each
/// level, which the kernels' source defines there, and name(level), which picks one.
#define SORVO_DECLARE_KERNELS(Table, name)                                 \
    SORVO_SIMD_LEVELS(SORVO_DECLARE_LEVEL, Table, name)                    \
    inline const Table& name(SimdLevel simd) {                             \
        switch (simd) { SORVO_SIMD_LEVELS(SORVO_PICK_LEVEL, Table, name) } \
        __builtin_unreachable();                                           \
    }

#define SORVO_DECLARE_LEVEL(level, Table, name) \
    namespace level {                           \
    extern const Table name;                    \
    }

#define SORVO_PICK_LEVEL(level, Table, name) \
    case SimdLevel::level:                   \
        return level::name;
