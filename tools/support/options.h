// Helpers for command-line options whose errors name the option and its limit.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sorvo_tool {

// A word of the command line and the constant of the library that it stands for.
struct Choice {
    const char* word;
    int value;
};
using Choices = std::vector<Choice>;

// The first word that stands for `value`.
std::string word_of(const Choices& choices, int value);

CLI::Option* add_choice(CLI::App& app, const std::string& name, std::optional<int>& target,
                        const Choices& choices, const std::string& description);

// Validators; `limit` is part of the range.
CLI::Validator at_least(double limit);
CLI::Validator at_most(double limit);

// The part of every --help behind the options: each line a command that can be pasted.
void add_examples(CLI::App& app, const std::vector<std::string>& examples);

}  // namespace sorvo_tool
