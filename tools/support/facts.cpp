#include "support/facts.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "support/text.h"

namespace sorvo_tool {
namespace {

std::string quoted(const std::string& text) {
    static const char* const hex = "0123456789abcdef";
    std::string result = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            result += std::string("\\") + c;
        else if (code < 0x20)
            result += std::string("\\u00") + hex[code >> 4] + hex[code & 15];
        else
            result += c;
    }
    return result + "\"";
}

std::string json_value(const FactValue& value) {
    return std::visit(
        [](const auto& held) -> std::string {
            using Held = std::decay_t<decltype(held)>;
            const auto integer = [](std::int64_t item) { return std::to_string(item); };
            if constexpr (std::is_same_v<Held, bool>)
                return held ? "true" : "false";
            else if constexpr (std::is_same_v<Held, std::int64_t>)
                return integer(held);
            else if constexpr (std::is_same_v<Held, double>)
                return std::isfinite(held) ? exact_number(held) : "null";  // JSON has no infinity
            else if constexpr (std::is_same_v<Held, std::string>)
                return quoted(held);
            else if constexpr (std::is_same_v<Held, std::vector<std::int64_t>>)
                return "[" + joined(held, ", ", integer) + "]";
            else
                return "[" + joined(held, ", ", quoted) + "]";
        },
        value);
}

std::string text_value(const FactValue& value) {
    return std::visit(
        [](const auto& held) -> std::string {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, bool>)
                return held ? "yes" : "no";
            else if constexpr (std::is_same_v<Held, std::int64_t>)
                return std::to_string(held);
            else if constexpr (std::is_same_v<Held, double>)
                return short_number(held);
            else if constexpr (std::is_same_v<Held, std::string>)
                return held;
            else if constexpr (std::is_same_v<Held, std::vector<std::int64_t>>)
                return joined(held, " x ", [](std::int64_t item) { return std::to_string(item); });
            else
                return joined(held, ", ", [](const std::string& item) { return item; });
        },
        value);
}

}  // namespace

std::string Facts::as_lines() const {
    std::size_t width = 0;
    for (const auto& fact : facts_) width = std::max(width, fact.first.size());
    std::string result;
    for (const auto& [name, value] : facts_) {
        std::string label = name;
        std::replace(label.begin(), label.end(), '_', ' ');
        label.resize(width + 2, ' ');
        result += "  " + label + text_value(value) + "\n";
    }
    return result;
}

std::string Facts::as_json() const {
    return "{" +
           joined(facts_, ", ",
                  [](const auto& fact) {
                      return quoted(fact.first) + ": " + json_value(fact.second);
                  }) +
           "}";
}

}  // namespace sorvo_tool
