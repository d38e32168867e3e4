#include <sorvo_audio.h>

#include <algorithm>
#include <memory>

#include "commands/command.h"
#include "commands/sounds.h"
#include "settings/filter_settings.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    SoundOptions sound;
    FilterSettings filter;
};

void filter_channel(const FilterSettings& filter, std::vector<float>& samples,
                    const std::string& file) {
    const auto sample_n = static_cast<int>(samples.size());
    const auto b_n = static_cast<int>(filter.numerator.size());
    const auto a_n = static_cast<int>(filter.denominator.size());
    std::vector<float> state(static_cast<std::size_t>(std::max(b_n, a_n) - 1));
    if (filter.settled && !state.empty()) {
        check_status(sorvoAudioGetLinerFilterZiCoef(state.data(), filter.numerator.data(),
                                                    filter.denominator.data(),
                                                    static_cast<int>(state.size()), b_n, a_n),
                     "sorvoAudioGetLinerFilterZiCoef", file);
        for (float& value : state) value *= samples.front();
    }
    check_status(sorvoAudioLinerFilter(samples.data(), samples.data(), filter.numerator.data(),
                                       filter.denominator.data(), state.data(), sample_n, sample_n,
                                       b_n, a_n, static_cast<int>(state.size())),
                 "sorvoAudioLinerFilter", file);
}

Report run(const Options& options, const Job& job) {
    Report report;
    Sound sound = load_sound(job.input, options.sound, report);
    for (auto& channel : sound.channels) filter_channel(options.filter, channel, job.input);
    write_result(job, std::move(sound), options.sound, report);
    return report;
}

}  // namespace

Command add_filter_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("filter", "Linear filter, by its coefficients");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"filter", sound_formats, true, false, {}};
    add_batch_options(*app, options->batch, command);
    add_filter_options(*app, options->filter);
    add_sound_options(*app, options->sound);
    add_examples(*app, {"filter speech.wav -o emphasised.wav --b 1,-0.97",
                        "filter speech.wav -o no-dc.wav --b 1,-1 --a 1,-0.995",
                        "filter recordings/ -o smooth/ --b 0.1 --a 1,-0.9 --settled"});
    return {app, [=]() mutable {
                complete(options->filter);
                command.run = [&](const Job& job) { return run(*options, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
