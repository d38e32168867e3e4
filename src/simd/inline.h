// What code compiled once per level needs around its functions.
#pragma once

// The namespace of the level for which a source is compiled; the build sets it for kernels. A
// function compiled for one level may never be the one that the linker keeps for all, so whatever
// kernels include stands in this namespace, or is always inlined and named nowhere else.
#if !defined(SORVO_LEVEL)
#define SORVO_LEVEL portable
#endif

#define SORVO_INLINE [[gnu::always_inline]] inline
#define SORVO_INLINE_BODY __attribute__((always_inline))  // of a lambda
