// What the commands that turn sound into sound share.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "support/batch.h"
#include "support/sound.h"
#include "support/sound_writer.h"

namespace sorvo_tool {

extern const std::vector<std::string> sound_formats;  // .wav .flac .npy .csv .raw

struct SoundOptions {
    std::optional<int> sample_format;  // none: that of the input
    bool mono = false;
};

void add_sound_options(CLI::App& app, SoundOptions& options, bool with_mono = true);

// A sound in blocks, with all its channels, or mixed down if the options say so.
class SoundBlocks {
  public:
    SoundBlocks(const std::string& path, const ReadingOptions& reading,
                const SoundOptions& options);

    const SoundFormat& format() const { return format_; }  // as it is to be written
    bool read(Block& block);
    void describe(Report& report) const;

  private:
    SoundReader reader_;
    SoundFormat format_;
};

// The same for a whole sound.
Sound load_sound(const std::string& path, const ReadingOptions& reading,
                 const SoundOptions& options, Report& report);
void write_sound(const Job& job, const Sound& sound, Report& report);

}  // namespace sorvo_tool
