#include <memory>

#include "blocks/filter_chain.h"
#include "commands/command.h"
#include "commands/sounds.h"
#include "settings/filter_rounding.h"
#include "settings/filter_settings.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    SoundOptions sound;
    FilterSettings filter;
};

Report run(const Options& options, const std::string& rounding, const Job& job) {
    SoundBlocks sound(job.input, options.batch.reading, options.sound);
    std::vector<FilterChain> chains(
        sound.format().channel_n,
        FilterChain(options.filter.design.sections, options.filter.settled, job.input));
    SoundWriter writer(job.output, job.ending, sound.format());
    Block block;
    while (sound.read(block)) {
        for (std::size_t i = 0; i < block.size(); ++i) chains[i].apply(block[i]);
        writer.write(block);
    }
    writer.commit();

    Report report;
    if (!rounding.empty()) report.notes.push_back(rounding);
    sound.describe(report);
    writer.describe(report);
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
                const std::string rounding = describe_rounding(options->filter.design);
                command.run = [&](const Job& job) { return run(*options, rounding, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
