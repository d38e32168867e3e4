#include "commands/sounds.h"

#include <filesystem>

#include "support/array.h"
#include "support/options.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

const Choices sample_format_choices{{"pcm16", static_cast<int>(SampleFormat::pcm16)},
                                    {"pcm24", static_cast<int>(SampleFormat::pcm24)},
                                    {"float", static_cast<int>(SampleFormat::float32)}};

Array array_of(const Sound& sound) {
    Array array;
    const std::size_t channel_n = sound.channels.size();
    if (channel_n > 1) array.shape.push_back(channel_n);
    array.shape.push_back(sound.channels.front().size());
    for (const auto& channel : sound.channels)
        array.data.insert(array.data.end(), channel.begin(), channel.end());
    return array;
}

}  // namespace

const std::vector<std::string> sound_formats{".wav", ".flac", ".npy", ".csv"};

void add_sound_options(CLI::App& app, SoundOptions& options, bool with_mono) {
    add_choice(app, "--sample-format", options.sample_format, sample_format_choices,
               "Samples of .wav and .flac [as in the input]");
    if (with_mono) app.add_flag("--mono", options.mono, "Mix all channels down to one");
}

Sound load_sound(const std::string& path, const SoundOptions& options, Report& report) {
    Sound sound = read_sound(path);
    report.seconds = sound.seconds();
    report.facts.add("sample_rate", number(sound.sample_rate));
    report.facts.add("channels", number(sound.channels.size()));
    report.facts.add("samples", number(sound.sample_n()));
    report.facts.add("seconds", sound.seconds());
    for (const auto& channel : sound.channels) count_not_finite(channel, "sample", "read", report);
    if (options.mono && sound.channels.size() > 1) {
        report.notes.push_back(counted(sound.channels.size(), "channel") + " mixed down to one");
        sound.channels = {mix_down(sound)};
    }
    return sound;
}

void write_result(const Job& job, Sound sound, const SoundOptions& options, Report& report) {
    if (options.sample_format)
        sound.sample_format = static_cast<SampleFormat>(*options.sample_format);
    for (const auto& channel : sound.channels)
        count_not_finite(channel, "sample", "written", report);
    const std::string ending = std::filesystem::path(job.output).extension().string();
    if (ending == ".npy") {
        write_npy(job.output, array_of(sound));
    } else if (ending == ".csv") {
        write_csv(job.output, array_of(sound));
    } else {
        const std::size_t clipped_n = write_sound(job.output, sound);
        if (clipped_n > 0)
            report.notes.push_back(counted(clipped_n, "sample") +
                                   " beyond full scale clipped; --sample-format float keeps them");
    }
    report.facts.add("samples_written", number(sound.sample_n()));
}

}  // namespace sorvo_tool
