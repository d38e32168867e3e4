#include "commands/sounds.h"

#include "support/options.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

const Choices sample_format_choices{{"pcm16", static_cast<int>(SampleFormat::pcm16)},
                                    {"pcm24", static_cast<int>(SampleFormat::pcm24)},
                                    {"float", static_cast<int>(SampleFormat::float32)}};

}  // namespace

const std::vector<std::string> sound_formats{".wav", ".flac", ".npy", ".csv", ".raw"};

void add_sound_options(CLI::App& app, SoundOptions& options, bool with_mono) {
    add_choice(app, "--sample-format", options.sample_format, sample_format_choices,
               "Samples of .wav and .flac [as in the input]");
    if (with_mono) app.add_flag("--mono", options.mono, "Mix all channels down to one");
}

SoundBlocks::SoundBlocks(const std::string& path, const ReadingOptions& reading,
                         const SoundOptions& options)
    : reader_(path, reading), format_(reader_.format()) {
    if (options.mono) format_.channel_n = 1;
    if (options.sample_format)
        format_.sample_format = static_cast<SampleFormat>(*options.sample_format);
}

bool SoundBlocks::read(Block& block) {
    if (!reader_.read(block)) return false;
    if (format_.channel_n == 1) block = {mix_down(block)};
    return true;
}

void SoundBlocks::describe(Report& report) const {
    reader_.describe(report);
    const std::size_t channel_n = reader_.format().channel_n;
    if (channel_n > format_.channel_n)
        report.notes.push_back(counted(channel_n, "channel") + " mixed down to one");
}

Sound load_sound(const std::string& path, const ReadingOptions& reading,
                 const SoundOptions& options, Report& report) {
    SoundBlocks blocks(path, reading, options);
    return read_whole(path, blocks, report);
}

void write_sound(const Job& job, const Sound& sound, Report& report) {
    SoundWriter writer(job.output, job.ending, sound.format);
    writer.write(sound.channels);
    writer.commit();
    writer.describe(report);
}

}  // namespace sorvo_tool
