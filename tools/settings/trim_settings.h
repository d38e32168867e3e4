// Parameters of trim.
#pragma once

#include <CLI/CLI.hpp>

namespace sorvo_tool {

struct TrimSettings {
    float top_db = 60;
    int frame_n = 2048;
    int hop_n = 512;
};

void add_trim_options(CLI::App& app, TrimSettings& settings);

}  // namespace sorvo_tool
