// Levels: the instruction sets for which kernels are compiled. Results do not depend on the level.
#pragma once

#include <vector>

// The levels of the target processor, slowest first: X(level, ...) for each. The build compiles
// every kernel once per level (cmake/simd_levels.cmake has the same list, with the compiler's
// flags).
#if defined(SORVO_AUDIO_GENERIC)
#define SORVO_SIMD_LEVELS(X, ...) X(generic, __VA_ARGS__)
#elif defined(__x86_64__) || defined(_M_X64)
#define SORVO_SIMD_LEVELS(X, ...) X(sse2, __VA_ARGS__) X(avx2, __VA_ARGS__) X(avx512, __VA_ARGS__)
#elif defined(__aarch64__)
#define SORVO_SIMD_LEVELS(X, ...) X(neon, __VA_ARGS__)
#elif defined(__wasm_simd128__)
#define SORVO_SIMD_LEVELS(X, ...) X(simd128, __VA_ARGS__)
#else
#define SORVO_SIMD_LEVELS(X, ...) X(generic, __VA_ARGS__)
#endif

namespace sorvo::audio {

#define SORVO_ENUMERATOR(level, ...) level,
/// avx2 includes FMA; avx512 is F, BW, DQ and VL; neon is that of 64-bit ARM; generic is what the
/// compiler makes of vectors of four floats.
enum class SimdLevel { SORVO_SIMD_LEVELS(SORVO_ENUMERATOR, ) };
#undef SORVO_ENUMERATOR

/// All levels that were compiled, slowest first.
std::vector<SimdLevel> all_simd_levels();

/// As the enumerator is called.
const char* simd_level_name(SimdLevel level);

/// True if this processor has the level.
bool is_supported(SimdLevel level);

/// The highest supported level. Sought each time, which costs next to nothing: an answer that one
/// thread computes and others wait for would never come where fork() leaves that thread behind.
SimdLevel simd_level();

}  // namespace sorvo::audio
