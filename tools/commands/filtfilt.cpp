#include <sorvo_audio.h>

#include <algorithm>
#include <memory>

#include "blocks/filter_chain.h"
#include "commands/command.h"
#include "commands/sounds.h"
#include "settings/filter_rounding.h"
#include "settings/filter_settings.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    SoundOptions sound;
    ZeroPhaseSettings filter;
};

std::vector<float> filter_both_ways(const ZeroPhaseSettings& filter,
                                    const std::vector<float>& samples, const std::string& file) {
    const std::vector<float> b = filter.design.sections.front().b();
    const std::vector<float> a = filter.design.sections.front().a();
    const auto sample_n = static_cast<int>(samples.size());
    std::vector<float> result(samples.size());
    check_status(
        sorvoAudioFilterFilter(result.data(), samples.data(), b.data(), a.data(), sample_n,
                               sample_n, static_cast<int>(b.size()), static_cast<int>(a.size()),
                               *filter.pad_type, *filter.pad_n),
        "sorvoAudioFilterFilter", file);
    return result;
}

std::vector<float> extended(const std::vector<float>& samples, int pad_type, int pad_n) {
    std::vector<float> result;
    const auto last = static_cast<int>(samples.size()) - 1;
    // The sample at a distance from the edge, on the side where there are none.
    const auto beyond = [&](int edge, int inwards) {
        const float at_edge = samples[static_cast<std::size_t>(edge)];
        if (pad_type == SORVO_AUDIO_PAD_CONSTANT) return at_edge;
        const float reflected = samples[static_cast<std::size_t>(edge + inwards)];
        return pad_type == SORVO_AUDIO_PAD_ODD ? 2 * at_edge - reflected : reflected;
    };
    for (int i = pad_n; i > 0; --i) result.push_back(beyond(0, i));
    result.insert(result.end(), samples.begin(), samples.end());
    for (int i = 1; i <= pad_n; ++i) result.push_back(beyond(last, -i));
    return result;
}

// All sections forward, then all backward.
std::vector<float> chain_both_ways(const ZeroPhaseSettings& filter,
                                   const std::vector<float>& samples, const std::string& file) {
    const int pad_n = *filter.pad_type == SORVO_AUDIO_PAD_NONE ? 0 : *filter.pad_n;
    std::vector<float> result = extended(samples, *filter.pad_type, pad_n);
    for (int way = 0; way < 2; ++way) {
        FilterChain(filter.design.sections, true, file).apply(result);
        std::reverse(result.begin(), result.end());
    }
    return {result.begin() + pad_n, result.end() - pad_n};
}

Report run(const Options& options, const std::string& rounding, const Job& job) {
    const ZeroPhaseSettings& filter = options.filter;
    Report report;
    if (!rounding.empty()) report.notes.push_back(rounding);
    Sound sound = load_sound(job.input, options.batch.reading, options.sound, report);
    const int sample_n = sound.sample_n();
    if (*filter.pad_type != SORVO_AUDIO_PAD_NONE && *filter.pad_type != SORVO_AUDIO_PAD_CONSTANT &&
        *filter.pad_n >= sample_n)
        throw Failure(
            Exit::input_failed, job.input,
            "is too short to be extended, " + counted(static_cast<std::size_t>(sample_n), "sample"),
            "more than " + std::to_string(*filter.pad_n) + " needed, --pad-len",
            "give a smaller --pad-len or --pad-type constant");
    for (auto& channel : sound.channels)
        channel = filter.design.is_cascade() ? chain_both_ways(filter, channel, job.input)
                                             : filter_both_ways(filter, channel, job.input);
    write_sound(job, sound, report);
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
                const std::string rounding = describe_rounding(options->filter.design);
                command.run = [&](const Job& job) { return run(*options, rounding, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
