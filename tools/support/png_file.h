// Pixels, and the PNG file they become.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sorvo_tool {

struct Colour {
    std::uint8_t red, green, blue;
};

struct Pixels {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<Colour> data;  // [height][width], from the top
};

void write_png(const std::string& path, const Pixels& pixels);

}  // namespace sorvo_tool
