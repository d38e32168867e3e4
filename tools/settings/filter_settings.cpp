#include "settings/filter_settings.h"

#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>

#include "support/failure.h"

namespace sorvo_tool {
namespace {

// Coefficients as 1,-0.9: one argument, so that a list may begin with a minus sign.
void add_coefficients(CLI::App& app, const std::string& name, std::vector<float>& target,
                      const std::string& description) {
    const auto take = [&target, name](const std::string& list) {
        target.clear();
        for (const std::string& text : CLI::detail::split(list, ',')) {
            float value = 0;
            if (!CLI::detail::lexical_cast(text, value) || !std::isfinite(value))
                throw CLI::ValidationError(name, "'" + text + "' in " + list + " is no number");
            target.push_back(value);
        }
    };
    app.add_option_function<std::string>(name, take, description)->type_name("C,C,...");
}

template <typename Settings>
void add_both_coefficients(CLI::App& app, Settings& settings) {
    add_coefficients(app, "--b", settings.numerator, "Numerator: of x[i], x[i-1], ...");
    app.get_option("--b")->required();
    add_coefficients(app, "--a", settings.denominator, "Denominator: of y[i], y[i-1], ... [1]");
}

template <typename Settings>
void complete_coefficients(Settings& settings) {
    if (settings.denominator.empty()) settings.denominator = {1};
    if (settings.denominator.front() == 0)
        throw Failure(Exit::usage, "--a", "its first coefficient is 0", "",
                      "every coefficient is divided by it, so leave out leading zeros");
}

}  // namespace

const Choices pad_choices{{"odd", SORVO_AUDIO_PAD_ODD},
                          {"even", SORVO_AUDIO_PAD_REFLECT},
                          {"constant", SORVO_AUDIO_PAD_CONSTANT},
                          {"none", SORVO_AUDIO_PAD_NONE}};

void add_filter_options(CLI::App& app, FilterSettings& settings) {
    add_both_coefficients(app, settings);
    app.add_flag("--settled", settings.settled,
                 "Begin as if the first sample had always been there, not from rest");
}

void add_zero_phase_options(CLI::App& app, ZeroPhaseSettings& settings) {
    add_both_coefficients(app, settings);
    add_choice(app, "--pad-type", settings.pad_type, pad_choices, "Extension of the ends [odd]");
    app.add_option("--pad-len", settings.pad_n,
                   "Samples of extension [3 times the longer of --b and --a]")
        ->check(at_least(0))
        ->type_name("N");
}

void complete(FilterSettings& settings) {
    complete_coefficients(settings);
}

void complete(ZeroPhaseSettings& settings) {
    complete_coefficients(settings);
    settings.pad_type = settings.pad_type.value_or(SORVO_AUDIO_PAD_ODD);
    const std::size_t longer_n = std::max(settings.numerator.size(), settings.denominator.size());
    settings.pad_n = settings.pad_n.value_or(static_cast<int>(3 * longer_n));
}

}  // namespace sorvo_tool
