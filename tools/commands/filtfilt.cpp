#include <sorvo_audio.h>

#include <memory>

#include "commands/command.h"
#include "commands/sounds.h"
#include "settings/filter_settings.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    SoundOptions sound;
    ZeroPhaseSettings filter;
};

Report run(const Options& options, const Job& job) {
    const ZeroPhaseSettings& filter = options.filter;
    Report report;
    Sound sound = load_sound(job.input, options.sound, report);
    const int sample_n = sound.sample_n();
    if (*filter.pad_type != SORVO_AUDIO_PAD_NONE && *filter.pad_type != SORVO_AUDIO_PAD_CONSTANT &&
        *filter.pad_n >= sample_n)
        throw Failure(
            Exit::input_failed, job.input,
            "is too short to be extended, " + counted(static_cast<std::size_t>(sample_n), "sample"),
            "more than " + std::to_string(*filter.pad_n) + " needed, --pad-len",
            "give a smaller --pad-len or --pad-type constant");
    for (auto& channel : sound.channels) {
        std::vector<float> filtered(channel.size());
        check_status(
            sorvoAudioFilterFilter(
                filtered.data(), channel.data(), filter.numerator.data(), filter.denominator.data(),
                sample_n, sample_n, static_cast<int>(filter.numerator.size()),
                static_cast<int>(filter.denominator.size()), *filter.pad_type, *filter.pad_n),
            "sorvoAudioFilterFilter", job.input);
        channel = std::move(filtered);
    }
    write_result(job, std::move(sound), options.sound, report);
    return report;
}

}  // namespace

Command add_filtfilt_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand(
        "filtfilt", "Linear filter forward and backward, which shifts nothing in time");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"filtfilt", sound_formats, true, false, {}};
    add_batch_options(*app, options->batch, command);
    add_zero_phase_options(*app, options->filter);
    add_sound_options(*app, options->sound);
    add_examples(*app, {"filtfilt speech.wav -o smooth.wav --b 0.2 --a 1,-0.8",
                        "filtfilt speech.wav -o mean.flac --b 0.25,0.25,0.25,0.25 --pad-type even",
                        "filtfilt recordings/ -o filtered/ --b 0.2 --a 1,-0.8 --pad-type none"});
    return {app, [=]() mutable {
                complete(options->filter);
                command.run = [&](const Job& job) { return run(*options, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
