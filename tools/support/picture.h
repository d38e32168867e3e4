// Pictures of time-frequency arrays.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/png_file.h"

namespace sorvo_tool {

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

// With axes for time and frequency and a colour bar.
Pixels draw_with_axes(const Picture& picture);

// One pixel for each cell, nothing else.
Pixels draw_raw(const Picture& picture);

}  // namespace sorvo_tool
