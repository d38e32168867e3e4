// Sound read in blocks, from files and pipes.
#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/batch.h"

namespace sorvo_tool {

enum class SampleFormat { pcm16, pcm24, float32 };

// Samples of one or more channels, all equally many.
using Block = std::vector<std::vector<float>>;

struct SoundFormat {
    int sample_rate = 0;
    std::size_t channel_n = 1;
    SampleFormat sample_format = SampleFormat::pcm16;  // the smallest that holds the samples
    std::string type;                                  // of the file, for people
    std::optional<std::int64_t> sample_n;              // a channel, if it is known beforehand
    bool is_guess = false;                             // the sound may turn out to be shorter
};

// Samples of all channels in turn.
class SampleSource {
  public:
    virtual ~SampleSource() = default;
    virtual std::size_t read(float* samples, std::size_t frame_n) = 0;  // fewer only at the end
    virtual std::string complaint() const { return ""; }                // why it ended

    SoundFormat format;
};

class SoundReader {
  public:
    // Files that libsndfile knows, .npy [samples] or [channels][samples], and raw floats; "-" is
    // the standard input.
    SoundReader(std::string path, const ReadingOptions& options);

    const SoundFormat& format() const { return source_->format; }

    // The next samples, at least one; false at the end. Throws a Failure for a sound that is
    // damaged, empty, or shorter than its header says.
    bool read(Block& block);

    std::int64_t sample_n() const { return sample_n_; }  // a channel, that have been read
    // Tells what has been read: rate, channels, samples, and what is wrong with them.
    void describe(Report& report) const;

  private:
    void check_end() const;

    std::string path_;
    ReadingOptions options_;
    std::unique_ptr<SampleSource> source_;
    int header_rate_ = 0;
    std::vector<float> interleaved_;
    std::int64_t sample_n_ = 0;
    std::size_t not_finite_n_ = 0;
    bool is_silent_ = true;
};

// The mean of all channels.
std::vector<float> mix_down(const Block& channels);

// True for names that end as sound files do.
bool has_sound_ending(const std::string& path);

}  // namespace sorvo_tool
