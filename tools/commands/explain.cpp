#include "explain/explanation.h"

#include <cstdio>
#include <functional>
#include <memory>

#include "commands/command.h"
#include "support/facts.h"
#include "support/options.h"

namespace sorvo_tool {
namespace {

struct Options {
    StftOptions stft;
    IstftOptions istft;
    MelOptions mel;
    FilterSettings filter;
    ZeroPhaseSettings filtfilt;
    TrimSettings trim;
    int istft_fft_n = 512;
    int coefficient_n = 20;
    int from_rate = 16000;
    int to_rate = 0;
    bool json = false;
};

std::string indented(const std::string& code) {
    std::string text = "    ";
    for (const char c : code) text += c == '\n' ? std::string("\n    ") : std::string(1, c);
    return text;
}

void print(const Explanation& explanation, const std::string& command, bool as_json) {
    for (const Equivalent& equivalent : explanation) {
        if (as_json) {
            Facts facts;
            facts.add("command", command);
            facts.add("name", equivalent.name);
            facts.add("code", equivalent.code);
            facts.add("difference", equivalent.difference);
            std::printf("%s\n", facts.as_json().c_str());
        } else {
            std::printf("%s\n%s\n", equivalent.name.c_str(), indented(equivalent.code).c_str());
            if (!equivalent.difference.empty())
                std::printf("    difference: %s\n", equivalent.difference.c_str());
        }
    }
}

}  // namespace

Command add_explain_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand(
        "explain", "The calls of C, Python, scipy, librosa and torchaudio behind a command");
    const auto options = std::make_shared<Options>();
    app->add_flag("--json", options->json, "Print one JSON object a line for each tool");
    app->require_subcommand(1);
    app->fallthrough();

    using Explain = std::function<Explanation()>;
    std::vector<std::pair<CLI::App*, Explain>> topics;
    const auto add_topic = [&](const char* name, const char* about, const Explain& explain_topic) {
        CLI::App* topic = app->add_subcommand(name, about);
        topics.emplace_back(topic, explain_topic);
        return topic;
    };
    const auto count = [](CLI::App* topic, const char* name, int& target, const char* about) {
        return topic->add_option(name, target, about)->check(at_least(1));
    };

    CLI::App* topic =
        add_topic("stft", "Spectrogram", [=] { return explain(settle(options->stft)); });
    add_stft_options(*topic, options->stft);

    topic = add_topic("istft", "Sound of a spectrogram",
                      [=] { return explain(options->istft, options->istft_fft_n); });
    count(topic, "--n-fft", options->istft_fft_n, "Samples of a frame [512]")->type_name("N");
    add_istft_options(*topic, options->istft);

    topic = add_topic("mel", "Mel spectrogram", [=] {
        return explain(settle(options->mel), options->mel.preset, options->from_rate);
    });
    add_mel_options(*topic, options->mel);

    topic = add_topic("mfcc", "Mel-frequency cepstral coefficients", [=] {
        const MelSettings mel = settle(options->mel);
        check_coefficients(options->coefficient_n, mel);
        return explain_mfcc(mel, options->mel.preset, options->from_rate, options->coefficient_n);
    });
    add_coefficient_option(*topic, options->coefficient_n);
    add_band_options(*topic, options->mel);

    topic = add_topic("resample", "Another sample rate",
                      [=] { return explain_resample(options->from_rate, options->to_rate); });
    count(topic, "--from", options->from_rate, "Rate of the input [16000]")->type_name("HZ");
    count(topic, "--sample-rate", options->to_rate, "Rate to convert to")
        ->required()
        ->type_name("HZ");

    topic = add_topic("filter", "Linear filter", [=] {
        complete(options->filter);
        return explain(options->filter);
    });
    add_filter_options(*topic, options->filter);

    topic = add_topic("filtfilt", "Linear filter forward and backward", [=] {
        complete(options->filtfilt);
        return explain(options->filtfilt);
    });
    add_zero_phase_options(*topic, options->filtfilt);

    topic = add_topic("trim", "Silence cut off", [=] { return explain(options->trim); });
    add_trim_options(*topic, options->trim);

    add_examples(*app, {"explain mel --preset whisper", "explain stft --n-fft 400 --power 2 --json",
                        "explain filtfilt --b 0.2 --a 1,-0.8"});
    return {app, [=] {
                for (const auto& [chosen, explain_topic] : topics)
                    if (chosen->parsed()) print(explain_topic(), chosen->get_name(), options->json);
                return Exit::done;
            }};
}

}  // namespace sorvo_tool
