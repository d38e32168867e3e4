#pragma once

#include <cstddef>
#include <vector>

#include "filter/coefficients.h"
#include "filter/path.h"
#include "simd/level.h"

namespace sorvo::audio {

/// Fewer samples are not worth the buffers.
constexpr std::size_t min_fir_filter_n = 256;

/// Whether a filter has state but no feedback: every a[k] after the first is a zero.
bool is_fir(const FilterCoefficients& coef);

/// The difference equation of an is_fir() filter, with successive outputs side by side.
///
/// Without feedback an output is a sum over the last inputs, from the highest tap to the lowest,
/// rounded to State after every tap but the last. The products a[k] y of the definition are zeros
/// while y is finite. Subtracting a zero changes no sum but -0, which it may make +0: outputs of -0
/// are summed once more as defined. From an output that is not finite on, a[k] y is NaN, and so is
/// every later output.
template <class Out, class In, class State>
class FirFilter {
  public:
    /// All memory is had here. The coefficients must stay.
    FirFilter(const FilterCoefficients& coef, SimdLevel level);

    void run(const Path<Out>& dst, const Path<const In>& src, State* z);

  private:
    /// The output at x_[i], as defined.
    double output(std::size_t i) const;
    /// Puts right a block of n outputs. Returns whether all are finite.
    bool correct(std::size_t n);

    const FilterCoefficients& coef_;
    SimdLevel level_;
    std::size_t m_;  ///< the last m inputs count
    std::size_t block_n_;
    // The last m inputs and outputs, then those of a block.
    std::vector<double> x_;
    std::vector<double> y_;
};

}  // namespace sorvo::audio
