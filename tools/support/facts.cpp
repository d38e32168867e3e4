#include "support/facts.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "support/text.h"

namespace sorvo_tool {
namespace {

// Bytes of the UTF-8 character that text begins with at `at`; 0 if there is none. Overlong forms,
// surrogates and what lies beyond U+10FFFF are none.
std::size_t utf8_character_n(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0u;
    };
    const unsigned first = byte(0);
    const std::size_t n = first < 0x80   ? 1
                          : first < 0xc2 ? 0
                          : first < 0xe0 ? 2
                          : first < 0xf0 ? 3
                          : first < 0xf5 ? 4
                                         : 0;
    for (std::size_t i = 1; i < n; ++i)
        if ((byte(i) & 0xc0) != 0x80) return 0;
    const bool is_wrong = (first == 0xe0 && byte(1) < 0xa0) || (first == 0xed && byte(1) > 0x9f) ||
                          (first == 0xf0 && byte(1) < 0x90) || (first == 0xf4 && byte(1) > 0x8f);
    return is_wrong ? 0 : n;
}

// A JSON string. File names may hold any bytes; what is no UTF-8 becomes U+FFFD.
std::string quoted(const std::string& text) {
    static const char* const hex = "0123456789abcdef";
    std::string result = "\"";
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t n = utf8_character_n(text, at);
        const auto code = static_cast<unsigned char>(text[at]);
        if (n == 0)
            result += "\xef\xbf\xbd";
        else if (code == '"' || code == '\\')
            result += std::string("\\") + text[at];
        else if (code < 0x20)
            result += std::string("\\u00") + hex[code >> 4] + hex[code & 15];
        else
            result += text.substr(at, n);
        at += std::max<std::size_t>(n, 1);
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
