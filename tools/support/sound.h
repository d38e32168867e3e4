// Sound in memory and in files.
#pragma once

#include <string>
#include <vector>

#include "support/facts.h"

namespace sorvo_tool {

enum class SampleFormat { pcm16, pcm24, float32 };

struct Sound {
    std::vector<std::vector<float>> channels;  // at least one, all of one length, never empty
    int sample_rate = 0;
    SampleFormat sample_format = SampleFormat::pcm16;  // the smallest that holds the samples
    std::string file_type;                             // of the file it came from, for people

    int sample_n() const { return static_cast<int>(channels.front().size()); }
    double seconds() const { return static_cast<double>(sample_n()) / sample_rate; }
};

// Reads any sound file that libsndfile knows, at any rate and with any number of channels.
Sound read_sound(const std::string& path);

// Writes .wav or .flac, by the ending of the name. Samples beyond full scale are clipped; their
// number is returned.
std::size_t write_sound(const std::string& path, const Sound& sound);

// The mean of all channels.
std::vector<float> mix_down(const Sound& sound);

// Converts to another rate; `file` is named in failures.
std::vector<float> resample(const std::vector<float>& samples, int from_rate, int to_rate,
                            const std::string& file);

// True for names that end as sound files do.
bool has_sound_ending(const std::string& path);

}  // namespace sorvo_tool
