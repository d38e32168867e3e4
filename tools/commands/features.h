// What the commands that turn sound into features share.
#pragma once

#include <string>
#include <vector>

#include "settings/frame_settings.h"
#include "support/array.h"
#include "support/batch.h"
#include "support/picture.h"

namespace sorvo_tool {

// One channel of samples, ready to be cut into frames.
struct Signal {
    std::vector<float> samples;
    int sample_rate = 0;

    int sample_n() const { return static_cast<int>(samples.size()); }
};

// Reads a sound, mixes its channels, and converts it to `sample_rate` (0: as it is), telling the
// report of each.
Signal load_signal(const std::string& path, int sample_rate, Report& report);

// Decibels below the maximum of magnitudes raised to `power`.
std::vector<float> to_decibels(const std::vector<float>& values, float power, float top_db,
                               const std::string& file);

// Picture of an array in decibels, with its time axis and range set.
Picture picture_of(std::vector<float> decibels, const FrameSettings& frame, int frame_n,
                   int sample_rate, const std::string& title);

// Writes the array, or the picture if the output is a .png, and the picture that was asked for.
void write_features(const Job& job, const Array& array, const Picture& picture, bool raw);

// The smallest, largest and mean value.
void report_range(const std::vector<float>& values, Report& report);

}  // namespace sorvo_tool
