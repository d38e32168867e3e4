// Small pieces of text.
#pragma once

#include <array>
#include <charconv>
#include <string>

namespace sorvo_tool {

// At most six digits, with a point in any locale.
inline std::string short_number(double value) {
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6);
    return {text.data(), end.ptr};
}

// As many digits as it takes to read the same value again.
inline std::string exact_number(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

// "3 files", "1 file"
inline std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

template <typename List, typename Write>
std::string joined(const List& list, const char* separator, const Write& write) {
    std::string result;
    for (const auto& item : list) result += (result.empty() ? "" : separator) + write(item);
    return result;
}

}  // namespace sorvo_tool
