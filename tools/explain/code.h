// Pieces of code in text.
#pragma once

#include <string>
#include <vector>

#include "support/options.h"

namespace sorvo_tool {

// name(argument, ...), broken before 100 columns, further lines under the first argument.
std::string call(const std::string& name, const std::vector<std::string>& arguments);

// "key=value"; text is quoted.
std::string keyword(const std::string& key, int value);
std::string keyword(const std::string& key, float value);
std::string keyword(const std::string& key, const std::string& text);
std::string keyword(const std::string& key, const char* code);  // as it stands

// The constants of the header by value.
std::string c_window(int window);
std::string c_center(int center);
std::string c_norm(int norm);
std::string c_mel_norm(int norm);
std::string c_mel_formula(int formula);
std::string c_pad(int pad);

// A float that reads back as itself; with `suffix` as a C literal.
std::string literal(float value, bool suffix = false);
std::string list_of(const std::vector<float>& values, bool suffix = false);

}  // namespace sorvo_tool
