// Stops a build whose compiler may change results: every sum, product and comparison of the library
// means what it says. cmake/compiler.cmake gives the flags, last on each command line; other builds
// have to do the same.
#pragma once

#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__) || \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(__NO_SIGNED_ZEROS__)
#error \
    "sorvo_audio gives defined bits, which -ffast-math or a part of it would change: build it without, or add \
-fno-fast-math -fno-unsafe-math-optimizations -ffp-contract=off after it"
#endif
