// What the benchmarks listen to, and the parameters that several of them share.
#pragma once

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

namespace sorvo::bench {

/// Memory that starts at a cache line, as peers' plans like it.
struct AlignedFree {
    void operator()(float* p) const { std::free(p); }
};
using AlignedFloats = std::unique_ptr<float[], AlignedFree>;
AlignedFloats aligned_floats(std::size_t n);

/// A chord with a little noise: no denormals, no silence, most energy far below any Nyquist
/// frequency.
std::vector<float> make_signal(int sample_rate, double seconds);

/// Coefficients of a filter, numerator and denominator.
struct Filter {
    const char* name;
    std::vector<float> b;
    std::vector<float> a;
};

/// Butterworth low-passes at 0.25 of the Nyquist frequency, and a FIR low-pass.
Filter order2_filter();
Filter order8_filter();
Filter fir32_filter();

}  // namespace sorvo::bench
