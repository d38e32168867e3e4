#pragma once

#include <cstddef>

namespace sorvo::audio {

/// The next multiple.
constexpr std::size_t round_up(std::size_t n, std::size_t multiple) {
    return (n + multiple - 1) / multiple * multiple;
}

}  // namespace sorvo::audio
