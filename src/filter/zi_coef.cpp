#include "filter/zi_coef.h"

#include <algorithm>
#include <cstddef>

#include "filter/coefficients.h"

namespace sorvo::audio {

// Solves (I - A') zi = B for the companion matrix A of the denominator and B[k] = b[k] - a[k] b[0].
// The structure of A makes the first value a quotient of two sums and every other one a running
// sum.
template <class Out, class Coef>
void create_zi_coef(Out* zi, const Coef* n_coef, const Coef* d_coef, int zi_n, int n_coef_n,
                    int d_coef_n) {
    if (zi_n <= 0) {
        return;
    }
    const FilterCoefficients coef(n_coef, d_coef, n_coef_n, d_coef_n);
    const std::vector<double>& b = coef.b;
    const std::vector<double>& a = coef.a;
    const std::size_t n = b.size();
    const auto wanted_n = static_cast<std::size_t>(zi_n);
    const std::size_t m = std::min(wanted_n, n - 1);
    if (m > 0) {
        double sum_a = 0.0;
        for (std::size_t i = 0; i < static_cast<std::size_t>(d_coef_n); ++i) {
            sum_a += a[i];
        }
        double sum_b = 0.0;
        for (std::size_t k = 1; k < n; ++k) {
            sum_b += b[k] - a[k] * b[0];
        }
        const double z0 = sum_b / sum_a;
        zi[0] = static_cast<Out>(z0);
        double running_a = a[0];
        double running_b = 0.0;
        for (std::size_t k = 1; k < m; ++k) {
            running_a += a[k];
            running_b += b[k] - a[k] * b[0];
            zi[k] = static_cast<Out>(z0 * running_a - running_b);
        }
    }
    std::fill(zi + m, zi + wanted_n, static_cast<Out>(0));
}

template void create_zi_coef(float*, const float*, const float*, int, int, int);
template void create_zi_coef(double*, const float*, const float*, int, int, int);

}  // namespace sorvo::audio
