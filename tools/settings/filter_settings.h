// Coefficients and modes of the linear filters.
#pragma once

#include <optional>
#include <vector>

#include "support/options.h"

namespace sorvo_tool {

struct FilterSettings {
    std::vector<float> numerator;
    std::vector<float> denominator;
    bool settled = false;
};

struct ZeroPhaseSettings {
    std::vector<float> numerator;
    std::vector<float> denominator;
    std::optional<int> pad_type;
    std::optional<int> pad_n;
};

extern const Choices pad_choices;

void add_filter_options(CLI::App& app, FilterSettings& settings);
void add_zero_phase_options(CLI::App& app, ZeroPhaseSettings& settings);

// Fills in what was not given, and throws a Failure if the filter cannot be.
void complete(FilterSettings& settings);
void complete(ZeroPhaseSettings& settings);

}  // namespace sorvo_tool
