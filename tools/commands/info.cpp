#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>

#include "blocks/resampler.h"
#include "commands/command.h"
#include "settings/presets.h"
#include "support/array.h"
#include "support/facts.h"
#include "support/options.h"
#include "support/sound_reader.h"

namespace sorvo_tool {
namespace {

struct Options {
    std::vector<std::string> inputs;
    bool json = false;
};

double decibels(double amplitude) {
    return 20 * std::log10(amplitude);
}

// Frames that mel --preset makes of the sound; 0 where it is too short.
void add_frame_counts(Facts& facts, int sample_rate, std::int64_t sample_n) {
    constexpr double any_ratio = std::numeric_limits<double>::infinity();
    for (const Preset& preset : all_presets()) {
        const Resampler resampler(sample_rate, preset.mel.sample_rate, any_ratio, "");
        facts.add("frames_" + preset.name,
                  number(frame_count(preset.mel, resampler.output_n(sample_n))));
    }
}

Facts describe_sound(const std::string& path) {
    SoundReader reader(path, {});
    Block block;
    double square_sum = 0;
    double peak = 0;
    std::int64_t full_scale_n = 0;
    std::int64_t bad_n = 0;
    while (reader.read(block))
        for (const auto& channel : block)
            for (const float sample : channel) {
                const double size = std::abs(static_cast<double>(sample));
                if (!std::isfinite(size)) {
                    ++bad_n;
                    continue;
                }
                peak = std::max(peak, size);
                square_sum += size * size;
                full_scale_n += size >= 32767.0 / 32768;
            }
    const SoundFormat& format = reader.format();
    const double count =
        static_cast<double>(format.channel_n) * static_cast<double>(reader.sample_n());
    Facts facts;
    facts.add("format", format.type);
    facts.add("sample_rate", number(format.sample_rate));
    facts.add("channels", number(format.channel_n));
    facts.add("samples", number(reader.sample_n()));
    facts.add("seconds", static_cast<double>(reader.sample_n()) / format.sample_rate);
    facts.add("peak_db", decibels(peak));
    facts.add("rms_db", decibels(std::sqrt(square_sum / count)));
    facts.add("samples_at_full_scale", full_scale_n);
    facts.add("samples_not_finite", bad_n);
    add_frame_counts(facts, format.sample_rate, reader.sample_n());
    return facts;
}

Facts describe_array(const std::string& path) {
    const Array array = read_npy(path);
    Facts facts;
    facts.add("format", std::string(array.is_complex ? "NumPy, complex" : "NumPy, real"));
    facts.add("shape", std::vector<std::int64_t>(array.shape.begin(), array.shape.end()));
    if (!array.data.empty()) {
        const auto [lowest, highest] = std::minmax_element(array.data.begin(), array.data.end());
        facts.add("minimum", static_cast<double>(*lowest));
        facts.add("maximum", static_cast<double>(*highest));
    }
    facts.add("values_not_finite",
              number(std::count_if(array.data.begin(), array.data.end(),
                                   [](float value) { return !std::isfinite(value); })));
    return facts;
}

Exit run(const Options& options) {
    Exit exit = Exit::done;
    for (const std::string& input : options.inputs) try {
            const bool is_array = std::filesystem::path(input).extension() == ".npy";
            const Facts found = is_array ? describe_array(input) : describe_sound(input);
            if (options.json) {
                Facts facts;
                facts.add("command", std::string("info"));
                facts.add("input", input);
                facts.append(found);
                std::printf("%s\n", facts.as_json().c_str());
            } else {
                std::printf("%s\n%s", input.c_str(), found.as_lines().c_str());
            }
        } catch (const Failure& failure) {
            std::fprintf(stderr, "sorvo-audio info: %s\n", failure.what());
            exit = worse(exit, failure.exit());
        }
    return exit;
}

}  // namespace

Command add_info_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("info", "What a sound or .npy file holds");
    const auto options = std::make_shared<Options>();
    app->add_option("INPUT", options->inputs, "Sound or .npy files")->required()->type_name("");
    app->add_flag("--json", options->json, "Print one JSON object a line for each input");
    add_examples(*app,
                 {"info speech.wav", "info speech.wav stereo.flac", "info --json speech.wav"});
    return {app, [=] { return run(*options); }};
}

}  // namespace sorvo_tool
