#pragma once

namespace sorvo::audio {

/// The filter state from which a constant input of 1 gives a constant output at once (layout of
/// linerfilter, N - 1 values; what zi_n asks beyond is 0, a smaller zi_n gets the first values).
/// Nothing is checked or written for zi_n <= 0; else a coefficient count below 1 throws
/// SorvoInvalidArgument. A denominator that sums to 0 has no such state: infinities or NaN.
template <class Out, class Coef>
void create_zi_coef(Out* zi, const Coef* n_coef, const Coef* d_coef, int zi_n, int n_coef_n,
                    int d_coef_n);

}  // namespace sorvo::audio
