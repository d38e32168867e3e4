#include "settings/filter_settings.h"

#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "support/array.h"
#include "support/failure.h"

namespace sorvo_tool {
namespace {

std::vector<double> parse_coefficients(const std::string& name, const std::string& list) {
    std::vector<double> values;
    for (const std::string& text : CLI::detail::split(list, ',')) {
        double value = 0;
        if (!CLI::detail::lexical_cast(text, value) || !std::isfinite(static_cast<float>(value)))
            throw Failure(Exit::usage, name, "'" + text + "' in " + list + " is no number", "",
                          "give numbers with commas between them, as in 1,-0.9");
        values.push_back(value);
    }
    return values;
}

// Coefficients as 1,-0.9: one argument, so that a list may begin with a minus sign.
void add_coefficients(CLI::App& app, const std::string& name, std::vector<double>& target,
                      const std::string& description) {
    const auto take = [&target, name](const std::string& list) {
        target = parse_coefficients(name, list);
    };
    app.add_option_function<std::string>(name, take, description)->type_name("C,C,...");
}

void add_design_options(CLI::App& app, FilterDesign& design) {
    add_coefficients(app, "--b", design.numerator, "Numerator: of x[i], x[i-1], ...");
    add_coefficients(app, "--a", design.denominator, "Denominator: of y[i], y[i-1], ... [1]");
    app.add_option("--sos", design.section_words,
                   "Instead of both, a section of order 2: its three of --b, then its three of "
                   "--a; once for each section, or a .npy [sections][6]")
        ->allow_extra_args(false)
        ->type_name("C,C,C,C,C,C");
}

bool is_array(const std::string& word) {
    return std::filesystem::path(word).extension() == ".npy";
}

void append_sections(FilterDesign& design, const std::string& word) {
    std::vector<double> values;
    if (is_array(word)) {
        NpyFile file(word, nullptr);
        const auto& shape = file.shape();
        if (file.is_complex() || shape.size() != 2 || shape[0] == 0 || shape[1] != 6)
            throw Failure(Exit::usage, "--sos", word + " is no array of sections",
                          "real, [sections][6]", "save what a design gives with output=\"sos\"");
        values.resize(file.float_n());
        file.read(values.data(), values.size(), 0);
    } else {
        values = parse_coefficients("--sos", word);
        if (values.size() != 6)
            throw Failure(Exit::usage, "--sos",
                          word + " has " + std::to_string(values.size()) + " coefficients",
                          "6 in each section", "give b0,b1,b2,a0,a1,a2, or a .npy file");
    }
    for (auto at = values.begin(); at != values.end(); at += 6)
        design.sections.push_back({{at, at + 3}, {at + 3, at + 6}});
}

void complete_design(FilterDesign& design) {
    const bool is_ratio = !design.numerator.empty() || !design.denominator.empty();
    if (design.is_cascade() && is_ratio)
        throw Failure(Exit::usage, "--sos", "contradicts --b and --a", "", "give one of them");
    if (!design.is_cascade() && design.numerator.empty())
        throw Failure(Exit::usage, "--b", "is missing", "", "give --b, and --a, or --sos");
    design.sections.clear();
    for (const std::string& word : design.section_words) append_sections(design, word);
    if (!design.is_cascade()) {
        if (design.denominator.empty()) design.denominator = {1};
        design.sections.push_back({design.numerator, design.denominator});
    }
    for (const Section& section : design.sections)
        if (section.a().front() == 0)
            throw Failure(Exit::usage, design.is_cascade() ? "--sos" : "--a",
                          "the first coefficient of y is 0", "",
                          "every coefficient is divided by it, so leave out leading zeros");
}

// Samples of extension that scipy takes as well.
int usual_pad_n(const FilterDesign& design) {
    const Section& first = design.sections.front();
    if (!design.is_cascade())
        return static_cast<int>(3 * std::max(first.numerator.size(), first.denominator.size()));
    // A section of order 1 has a 0 at the end of both.
    const auto count_zeros = [&](const auto& last_of) {
        return std::count_if(design.sections.begin(), design.sections.end(),
                             [&](const Section& section) { return last_of(section) == 0; });
    };
    const auto short_n =
        std::min(count_zeros([](const Section& section) { return section.b().back(); }),
                 count_zeros([](const Section& section) { return section.a().back(); }));
    const auto order = 2 * static_cast<std::ptrdiff_t>(design.sections.size()) - short_n;
    return static_cast<int>(3 * (1 + order));
}

}  // namespace

const Choices pad_choices{{"odd", SORVO_AUDIO_PAD_ODD},
                          {"even", SORVO_AUDIO_PAD_REFLECT},
                          {"constant", SORVO_AUDIO_PAD_CONSTANT},
                          {"none", SORVO_AUDIO_PAD_NONE}};

void add_filter_options(CLI::App& app, FilterSettings& settings) {
    add_design_options(app, settings.design);
    app.add_flag("--settled", settings.settled,
                 "Begin as if the first sample had always been there, not from rest");
}

void add_zero_phase_options(CLI::App& app, ZeroPhaseSettings& settings) {
    add_design_options(app, settings.design);
    add_choice(app, "--pad-type", settings.pad_type, pad_choices, "Extension of the ends [odd]");
    app.add_option("--pad-len", settings.pad_n,
                   "Samples of extension [3 times the longer of --b and --a, or the order + 1]")
        ->check(at_least(0))
        ->type_name("N");
}

void complete(FilterSettings& settings) {
    complete_design(settings.design);
}

void complete(ZeroPhaseSettings& settings) {
    complete_design(settings.design);
    settings.pad_type = settings.pad_type.value_or(SORVO_AUDIO_PAD_ODD);
    settings.pad_n = settings.pad_n.value_or(usual_pad_n(settings.design));
}

}  // namespace sorvo_tool
