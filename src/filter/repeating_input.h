// Long stretches of one value, or of a short pattern, such as digital silence.
//
// There a filter's state fades, as far as rounding lets it: it ends in a cycle of a few states, or
// in one that stays, often of denormal numbers, with which processors are slow. Two runs of a
// filter need never meet there. But where input and state are those of some samples ago, so is all
// that follows.
#pragma once

#include <cstddef>
#include <vector>

#include "filter/coefficients.h"
#include "filter/path.h"

namespace sorvo::audio {

/// Shorter stretches are not looked for.
constexpr std::size_t min_repeating_n = 2048;

/// Samples `begin` to `end - 1`, each of which has the bits of that `period` samples before. Both
/// are the end of the signal where there is no such stretch.
struct RepeatingInput {
    std::size_t begin;
    std::size_t end;
    std::size_t period;
};

/// The next stretch from `position` on. Faint samples, which filters make of silence, may repeat
/// with longer periods, too.
template <class In>
RepeatingInput find_repeating_input(const Path<const In>& src, std::size_t position,
                                    std::size_t max_period);

/// As run_difference_equation() over the stretch. `seen` is room for two states.
template <class Out, class In, class State>
void filter_repeating_input(const Path<Out>& dst, const Path<const In>& src,
                            const RepeatingInput& stretch, const FilterCoefficients& coef, State* z,
                            std::vector<State>& seen);

}  // namespace sorvo::audio
