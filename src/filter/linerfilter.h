#pragma once

#include <cstddef>

#include "filter/coefficients.h"
#include "simd/level.h"

namespace sorvo::audio {

/// One pass of a linear filter b / a in transposed direct form II ("linerfilter" is the fixed name
/// of the operation). All arithmetic is double; a value is rounded only when it is stored as Out or
/// State.
///
/// With N = max(n_coef_n, d_coef_n) and N - 1 state values z, for each sample x in order:
///   y = z[0] + b[0] x;  z[k-1] = b[k] x + z[k] - a[k] y;  z[N-2] = b[N-1] x - a[N-1] y
///
/// `zi` of at least N - 1 values is the initial state and receives the final one. A null or shorter
/// `zi` means a start from rest; it is then neither read nor written. min(dst_n, src_n) samples are
/// filtered, from the last to the first where `reverse` is set. `dst` may equal `src`.
/// Throws SorvoInvalidArgument for a coefficient count below 1.
template <class Out, class In, class Coef, class State>
void linerfilter(Out* dst, const In* src, const Coef* n_coef, const Coef* d_coef, State* zi,
                 int dst_n, int src_n, int n_coef_n, int d_coef_n, int zi_n, bool reverse,
                 SimdLevel level = simd_level());

/// The same pass with prepared coefficients over n samples, from and to the state z of N - 1
/// values.
template <class Out, class In, class State>
void run_filter(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
                bool reverse, SimdLevel level = simd_level());

}  // namespace sorvo::audio
