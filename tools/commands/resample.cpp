#include <memory>

#include "commands/command.h"
#include "commands/sounds.h"
#include "support/options.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    SoundOptions sound;
    int sample_rate = 0;
};

Report run(const Options& options, const Job& job) {
    Report report;
    Sound sound = load_sound(job.input, options.sound, report);
    for (auto& channel : sound.channels)
        channel = resample(channel, sound.sample_rate, options.sample_rate, job.input);
    sound.sample_rate = options.sample_rate;
    report.facts.add("new_sample_rate", number(sound.sample_rate));
    write_result(job, std::move(sound), options.sound, report);
    return report;
}

}  // namespace

Command add_resample_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("resample", "Convert a sound to another sample rate");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"resample", sound_formats, true, false, {}};
    add_batch_options(*app, options->batch, command);
    app->add_option("--sample-rate", options->sample_rate, "Rate to convert to")
        ->required()
        ->check(at_least(1))
        ->type_name("HZ");
    add_sound_options(*app, options->sound);
    add_examples(*app, {"resample speech.wav -o speech8k.wav --sample-rate 8000",
                        "resample stereo.flac -o stereo16k.flac --sample-rate 16000 --mono",
                        "resample recordings/ -o resampled/ --sample-rate 22050 --format flac"});
    return {app, [=]() mutable {
                command.run = [&](const Job& job) { return run(*options, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
