#include "support/options.h"

#include <algorithm>

#include "support/text.h"

namespace sorvo_tool {
namespace {

CLI::Validator bound(double limit, const char* words,
                     const std::function<bool(double)>& is_within) {
    const std::string text = words + short_number(limit);
    return CLI::Validator(
        [=](std::string& given) {
            double value = 0;
            const bool ok = CLI::detail::lexical_cast(given, value) && is_within(value);
            return ok ? std::string() : given + " is out of range (" + text + ")";
        },
        "");
}

}  // namespace

std::string word_of(const Choices& choices, int value) {
    const auto found = std::find_if(choices.begin(), choices.end(),
                                    [&](const Choice& choice) { return choice.value == value; });
    return found->word;
}

CLI::Option* add_choice(CLI::App& app, const std::string& name, std::optional<int>& target,
                        const Choices& choices, const std::string& description) {
    std::string words;
    for (const Choice& choice : choices)
        words += std::string(words.empty() ? "" : "|") + choice.word;
    const auto take = [&target, choices, words, name](const std::string& word) {
        for (const Choice& choice : choices)
            if (word == choice.word) {
                target = choice.value;
                return;
            }
        throw CLI::ValidationError(name, word + " is none of " + words);
    };
    return app.add_option_function<std::string>(name, take, description)->type_name(words);
}

CLI::Validator at_least(double limit) {
    return bound(limit, "at least ", [=](double value) { return value >= limit; });
}

CLI::Validator at_most(double limit) {
    return bound(limit, "at most ", [=](double value) { return value <= limit; });
}

void add_examples(CLI::App& app, const std::vector<std::string>& examples) {
    std::string text = "Examples:";
    for (const std::string& example : examples) text += "\n  sorvo-audio " + example;
    app.footer(text);
}

}  // namespace sorvo_tool
