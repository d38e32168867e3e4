#include "filter/coefficients.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "util/exceptions.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

std::vector<double> normalised(const float* coef, int coef_n, int padded_n, float a0) {
    auto result = make_zeros<double>(static_cast<std::uint64_t>(padded_n));
    for (std::size_t i = 0; i < static_cast<std::size_t>(coef_n); ++i) {
        result[i] = static_cast<double>(coef[i]) / static_cast<double>(a0);
    }
    return result;
}

}  // namespace

FilterCoefficients::FilterCoefficients(const float* n_coef, const float* d_coef, int n_coef_n,
                                       int d_coef_n) {
    if (n_coef_n < 1) {
        throw SorvoInvalidArgument("Invalid n_coef size.");
    }
    if (d_coef_n < 1) {
        throw SorvoInvalidArgument("Invalid d_coef size.");
    }
    const int padded_n = std::max(n_coef_n, d_coef_n);
    b = normalised(n_coef, n_coef_n, padded_n, d_coef[0]);
    a = normalised(d_coef, d_coef_n, padded_n, d_coef[0]);
}

}  // namespace sorvo::audio
