// Pictures of time-frequency arrays.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "support/png_file.h"

namespace sorvo_tool {

enum class Colormap { magma, viridis, gray };

struct PictureStyle {
    std::optional<int> colormap;  // a Colormap; none: magma
    int width = 0;                // of the whole picture in pixels; 0: by the sound's length
    int height = 0;
    bool log_frequency = false;  // octaves equally high; leaves out 0 Hz
    bool raw = false;            // one pixel for each cell, nothing else
};

struct Picture {
    std::vector<float> cells;  // [row_n][column_n] in dB; row 0 is drawn at the bottom
    std::size_t row_n = 0;
    std::size_t column_n = 0;
    float lowest = 0;   // the value of the darkest colour
    float highest = 0;  // the value of the brightest colour

    std::string title;
    std::string frequency_label;
    std::vector<double> row_hz;  // the frequency that each row stands for, rising
    double first_seconds = 0;    // the time that column 0 stands for
    double seconds_per_column = 1;
};

// With axes for time and frequency and a colour bar, unless the style is raw.
Pixels draw(const Picture& picture, const PictureStyle& style);

}  // namespace sorvo_tool
