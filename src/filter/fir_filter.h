#pragma once

#include <cstddef>

#include "filter/coefficients.h"
#include "simd/level.h"

namespace sorvo::audio {

/// Fewer samples are not worth the buffers.
constexpr std::size_t min_fir_filter_n = 256;

/// Whether a filter has state but no feedback: every a[k] after the first is a zero.
bool is_fir(const FilterCoefficients& coef);

/// As run_filter_plain() for is_fir() filters, with successive outputs side by side.
///
/// Without feedback an output is a sum over the last inputs, from the highest tap to the lowest,
/// rounded to State after every tap but the last. The products a[k] y of the definition are zeros
/// while y is finite; they decide nothing but the sign of a sum that is zero itself. So outputs
/// that come out finite and not zero are the filter's; where one does not, its block is done as
/// defined, and so is what follows until the last outputs are all finite again.
template <class Out, class In, class State>
void filter_fir(Out* dst, const In* src, const FilterCoefficients& coef, State* z, std::size_t n,
                bool reverse, SimdLevel level);

}  // namespace sorvo::audio
