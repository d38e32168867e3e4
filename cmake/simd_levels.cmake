# The levels of src/simd/level.h for the target processor, and the compiler's flags for each. Kernels are
# compiled once per level, as objects of their own, with SORVO_LEVEL as the name of their namespace.
option(SORVO_AUDIO_GENERIC "Compile the generic level alone, whatever the processor" OFF)

set(sorvo_flags_avx2 -mavx2 -mfma)
set(sorvo_flags_avx512 -mavx512f -mavx512bw -mavx512dq -mavx512vl)

if(SORVO_AUDIO_GENERIC)
    set(SORVO_SIMD_LEVELS generic)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
    set(SORVO_SIMD_LEVELS sse2 avx2 avx512)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64|ARM64)$")
    set(SORVO_SIMD_LEVELS neon)
elseif(EMSCRIPTEN)
    set(SORVO_SIMD_LEVELS simd128)
    target_compile_options(sorvo_numeric INTERFACE -msimd128)  # a module has one level throughout
else()
    set(SORVO_SIMD_LEVELS generic)
endif()

list(JOIN SORVO_SIMD_LEVELS " " level_names)
message(STATUS "levels: ${level_names}")

set(sorvo_kernel_objects)
set(sorvo_kernel_targets)
foreach(level IN LISTS SORVO_SIMD_LEVELS)
    add_library(sorvo_kernels_${level} OBJECT)
    target_compile_definitions(sorvo_kernels_${level} PRIVATE SORVO_LEVEL=${level})
    target_compile_options(sorvo_kernels_${level} PRIVATE ${sorvo_flags_${level}})
    list(APPEND sorvo_kernel_targets sorvo_kernels_${level})
    list(APPEND sorvo_kernel_objects "$<TARGET_OBJECTS:sorvo_kernels_${level}>")
endforeach()

# Sources of kernels, relative to the folder of the call.
function(sorvo_add_kernels)
    foreach(level IN LISTS SORVO_SIMD_LEVELS)
        target_sources(sorvo_kernels_${level} PRIVATE ${ARGN})
    endforeach()
endfunction()
