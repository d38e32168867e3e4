// What a mistyped word probably was meant to be.
#pragma once

#include <string>
#include <vector>

namespace sorvo_tool {

// The word of `known` that takes the fewest changes of single letters, or that begins as `given`
// does; empty if none is close.
std::string nearest(const std::string& given, const std::vector<std::string>& known);

}  // namespace sorvo_tool
