// Whole sounds in memory, for what cannot be done in blocks.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "support/sound_reader.h"

namespace sorvo_tool {

struct Sound {
    Block channels;  // at least one, never empty
    SoundFormat format;

    int sample_n() const { return static_cast<int>(channels.front().size()); }
    double seconds() const { return static_cast<double>(sample_n()) / format.sample_rate; }
};

// Reads all of a SoundReader or of what reads from one, and tells the report of it.
template <typename Reader>
Sound read_whole(const std::string& path, Reader& reader, Report& report) {
    Sound sound{Block(reader.format().channel_n), reader.format()};
    Block block;
    constexpr std::size_t most_n = std::numeric_limits<int>::max();
    while (reader.read(block)) {
        if (sound.channels.front().size() + block.front().size() > most_n)
            throw Failure(Exit::input_failed, path, "is too long",
                          "limit " + std::to_string(most_n) + " samples a channel",
                          "split it into shorter files");
        for (std::size_t i = 0; i < block.size(); ++i)
            sound.channels[i].insert(sound.channels[i].end(), block[i].begin(), block[i].end());
    }
    sound.format.sample_n = sound.sample_n();
    reader.describe(report);
    return sound;
}

}  // namespace sorvo_tool
