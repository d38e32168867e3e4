#include <sorvo_audio.h>

#include <memory>

#include "commands/command.h"
#include "commands/sounds.h"
#include "settings/trim_settings.h"
#include "support/options.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    SoundOptions sound;
    TrimSettings trim;
};

Report run(const Options& options, const Job& job) {
    Report report;
    Sound sound = load_sound(job.input, options.batch.reading, options.sound, report);
    const std::vector<float> mono = mix_down(sound.channels);
    int first = 0;
    int length = 0;
    check_status(
        sorvoAudioGetNonSilentPos(&first, &length, mono.data(), sound.sample_n(),
                                  options.trim.frame_n, options.trim.hop_n, options.trim.top_db),
        "sorvoAudioGetNonSilentPos", job.input);
    if (length == 0)
        throw Failure(Exit::input_failed, job.input, "has nothing left to keep",
                      "it has " + counted(static_cast<std::size_t>(sound.sample_n()), "sample") +
                          ", --frame-length " + std::to_string(options.trim.frame_n),
                      "give a smaller --frame-length or a larger --top-db");
    for (auto& channel : sound.channels)
        channel = {channel.begin() + first, channel.begin() + first + length};
    report.facts.add("first_sample", number(first));
    report.facts.add("start_seconds", static_cast<double>(first) / sound.format.sample_rate);
    report.facts.add("kept_seconds", static_cast<double>(length) / sound.format.sample_rate);
    sound.format.sample_n = length;
    write_sound(job, sound, report);
    return report;
}

}  // namespace

Command add_trim_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("trim", "Cut silence off both ends of a sound");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"trim", sound_formats, true, false, {}};
    add_batch_options(*app, options->batch, command);
    add_trim_options(*app, options->trim);
    add_sound_options(*app, options->sound);
    add_examples(*app,
                 {"trim speech.wav -o trimmed.wav", "trim stereo.flac -o trimmed.flac --top-db 40",
                  "trim recordings/ -o trimmed/ --frame-length 512 --hop-length 128"});
    return {app, [=]() mutable {
                command.run = [&](const Job& job) { return run(*options, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
