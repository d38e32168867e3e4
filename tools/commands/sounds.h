// What the commands that turn sound into sound share.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "support/batch.h"
#include "support/sound.h"

namespace sorvo_tool {

extern const std::vector<std::string> sound_formats;  // .wav .flac .npy .csv

struct SoundOptions {
    std::optional<int> sample_format;  // none: that of the input
    bool mono = false;
};

void add_sound_options(CLI::App& app, SoundOptions& options, bool with_mono = true);

// Reads a sound with all its channels, or mixed down if the options say so.
Sound load_sound(const std::string& path, const SoundOptions& options, Report& report);

// Writes a sound, or its samples as an array [channels][samples], one dimension less for one
// channel.
void write_result(const Job& job, Sound sound, const SoundOptions& options, Report& report);

}  // namespace sorvo_tool
