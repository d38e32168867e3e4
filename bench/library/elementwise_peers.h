// Element-wise operations as loops that the compiler, free to use them, turns into the vector
// functions of the C library (libmvec), whose results are up to 4 units in the last place off.
#pragma once

#include <string>
#include <vector>

namespace sorvo::bench {

struct ElementwisePeer {
    std::string name;
    void (*decibels)(float* dst, const float* src, int n, float top_db);
    void (*log1p)(float* dst, const float* src, int n);
    void (*angles)(float* mag, float* phase, const float* src, int n);
    void (*unit_numbers)(float* mag, float* phase, const float* src, int n);
};

/// The loops compiled for AVX2 and, where this machine has more, for it.
std::vector<ElementwisePeer> elementwise_peers();

}  // namespace sorvo::bench
