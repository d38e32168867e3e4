#include "settings/presets.h"

#include <cstdio>
#include <memory>

#include "commands/command.h"
#include "support/facts.h"
#include "support/options.h"

namespace sorvo_tool {
namespace {

struct Options {
    std::vector<std::string> names;
    bool json = false;
};

Facts facts_of(const Preset& preset) {
    MelOptions options;
    options.preset = preset.name;
    const MelSettings mel = settle(options);
    Facts facts;
    facts.add("about", preset.about);
    facts.add("sample_rate", number(mel.sample_rate));
    facts.add("n_fft", number(mel.frame.fft_n));
    facts.add("hop_length", number(mel.frame.hop_n));
    facts.add("win_length", number(mel.frame.win_n));
    facts.add("window", word_of(window_choices, mel.frame.window));
    facts.add("center", word_of(center_choices, mel.frame.center));
    facts.add("pad", number(mel.pad_n));
    facts.add("norm", word_of(norm_choices, mel.frame.norm));
    facts.add("power", static_cast<double>(mel.power));
    facts.add("n_mels", number(mel.mel_n));
    facts.add("fmin", static_cast<double>(mel.f_min));
    facts.add("fmax", static_cast<double>(upper_hz(mel, mel.sample_rate)));
    facts.add("mel_scale", word_of(mel_scale_choices, mel.mel_formula));
    facts.add("mel_norm", word_of(mel_norm_choices, mel.mel_norm));
    facts.add("extra_frames", number(*mel.extra_frame_n));
    facts.add("power_offset", static_cast<double>(mel.power_offset));
    facts.add("compression", word_of(mel.compression));
    return facts;
}

Exit run(const Options& options) {
    const std::vector<std::string> names = options.names.empty() ? preset_names() : options.names;
    for (const std::string& name : names) {
        const Facts described = facts_of(find_preset(name));
        if (options.json) {
            Facts facts;
            facts.add("name", name);
            facts.append(described);
            std::printf("%s\n", facts.as_json().c_str());
        } else {
            std::printf("%s\n%s", name.c_str(), described.as_lines().c_str());
        }
    }
    return Exit::done;
}

}  // namespace

Command add_presets_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("presets", "The models whose features mel --preset makes");
    const auto options = std::make_shared<Options>();
    app->add_option("NAME", options->names, "Presets to show [all]")
        ->check(CLI::IsMember(preset_names()).description(""))
        ->type_name("");
    app->add_flag("--json", options->json, "Print one JSON object a line for each preset");
    add_examples(*app, {"presets", "presets whisper hifigan", "presets --json"});
    return {app, [=] { return run(*options); }};
}

}  // namespace sorvo_tool
