#pragma once

#include <vector>

namespace sorvo::audio {

/// Numerator b and denominator a of a filter, in double, each divided by a[0] and padded with zeros
/// to the longer of the two. a[0] is not checked: a zero shows up as infinities and NaN in the
/// result.
struct FilterCoefficients {
    /// Throws SorvoInvalidArgument where a count is below 1.
    FilterCoefficients(const float* n_coef, const float* d_coef, int n_coef_n, int d_coef_n);

    std::vector<double> b;
    std::vector<double> a;
};

}  // namespace sorvo::audio
