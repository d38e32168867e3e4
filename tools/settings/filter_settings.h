// Coefficients and modes of the linear filters.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "support/options.h"

namespace sorvo_tool {

// A ratio of polynomials, as the user gives it.
struct Section {
    std::vector<double> numerator;
    std::vector<double> denominator;

    // As the library takes them.
    std::vector<float> b() const { return {numerator.begin(), numerator.end()}; }
    std::vector<float> a() const { return {denominator.begin(), denominator.end()}; }
};

// One filter after the other.
struct FilterDesign {
    std::vector<double> numerator;
    std::vector<double> denominator;
    std::vector<std::string> section_words;  // of --sos: six coefficients or a .npy file
    std::vector<Section> sections;           // of either, once the design is complete

    bool is_cascade() const { return !section_words.empty(); }
};

struct FilterSettings {
    FilterDesign design;
    bool settled = false;
};

struct ZeroPhaseSettings {
    FilterDesign design;
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
