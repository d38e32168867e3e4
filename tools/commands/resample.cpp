#include <memory>

#include "blocks/resampler.h"
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
    SoundBlocks sound(job.input, options.batch.reading, options.sound);
    SoundFormat format = sound.format();
    std::vector<Resampler> resamplers(format.channel_n,
                                      Resampler(format.sample_rate, options.sample_rate,
                                                options.batch.reading.most_ratio, job.input));
    format.sample_rate = options.sample_rate;
    if (format.sample_n) format.sample_n = resamplers.front().output_n(*format.sample_n);
    SoundWriter writer(job.output, job.ending, format);
    Block block;
    while (sound.read(block)) {
        for (std::size_t i = 0; i < block.size(); ++i) block[i] = resamplers[i].push(block[i]);
        writer.write(block);
    }
    block.resize(format.channel_n);
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = resamplers[i].flush();
    writer.write(block);
    writer.commit();

    Report report;
    sound.describe(report);
    const std::string aliasing = describe_aliasing(sound.format().sample_rate, options.sample_rate);
    if (!aliasing.empty()) report.notes.push_back(aliasing);
    report.facts.add("new_sample_rate", number(options.sample_rate));
    writer.describe(report);
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
    add_ratio_option(*app, options->batch.reading);
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
