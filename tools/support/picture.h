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
    std::size_t row_n = 0;
    std::size_t column_n = 0;
    // [row_n][shown_n] in dB, by add(); row 0 is drawn at the bottom. Where there are more columns
    // than pixels, each has the loudest of those that it stands for, so that nothing short is lost.
    std::vector<float> cells;
    std::size_t shown_n = 0;
    std::size_t added_n = 0;
    float lowest = 0;   // the value of the darkest colour
    float highest = 0;  // the value of the brightest colour

    std::string title;
    std::string frequency_label;
    std::vector<double> row_hz;  // the frequency that each row stands for, rising
    double first_seconds = 0;    // the time that column 0 stands for
    double seconds_per_column = 1;
};

// Makes room for the cells of row_n rows and column_n columns, which are then added in order, row
// by row, in pieces.
void begin(Picture& picture, const PictureStyle& style);
void add(Picture& picture, const std::vector<float>& levels);

// With axes for time and frequency and a colour bar, unless the style is raw.
Pixels draw(const Picture& picture, const PictureStyle& style);

}  // namespace sorvo_tool
