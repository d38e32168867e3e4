#include "settings/frame_settings.h"

namespace sorvo_tool {

const Choices window_choices{{"hann", SORVO_AUDIO_WINDOW_HANN},
                             {"hamming", SORVO_AUDIO_WINDOW_HAMMING}};
const Choices center_choices{{"reflect", SORVO_AUDIO_CENTER_REFLECT},
                             {"zeros", SORVO_AUDIO_CENTER_ZEROS},
                             {"none", SORVO_AUDIO_CENTER_NONE}};
const Choices norm_choices{{"none", SORVO_AUDIO_NORM_NONE},
                           {"window", SORVO_AUDIO_NORM_WINDOW},
                           {"length", SORVO_AUDIO_NORM_LENGTH}};

void add_frame_options(CLI::App& app, FrameOptions& options, bool with_fft_n) {
    const auto add_count = [&](const char* name, std::optional<int>& target, const char* text) {
        app.add_option(name, target, text)->check(at_least(1))->type_name("N");
    };
    if (with_fft_n) add_count("--n-fft", options.fft_n, "Samples of a frame and transform [512]");
    add_count("--hop-length", options.hop_n, "Samples from frame to frame [win-length / 4]");
    add_count("--win-length", options.win_n, "Samples of the window, centred in the frame [n-fft]");
    add_choice(app, "--window", options.window, window_choices, "Periodic window [hann]");
    add_choice(app, "--center", options.center, center_choices,
               "Centre frames, with what beyond the ends [reflect]");
    add_choice(app, "--norm", options.norm, norm_choices,
               "Scale: 1/sqrt(sum of squared window), or 2/n-fft [none]");
}

void apply(FrameSettings& settings, const FrameOptions& options) {
    settings.fft_n = options.fft_n.value_or(settings.fft_n);
    settings.hop_n = options.hop_n.value_or(settings.hop_n);
    settings.win_n = options.win_n.value_or(settings.win_n);
    settings.window = options.window.value_or(settings.window);
    settings.center = options.center.value_or(settings.center);
    settings.norm = options.norm.value_or(settings.norm);
    if (settings.win_n == 0) settings.win_n = settings.fft_n;
    if (settings.hop_n == 0) settings.hop_n = std::max(1, settings.win_n / 4);
}

double first_frame_seconds(const FrameSettings& settings, int sample_rate) {
    return settings.center == SORVO_AUDIO_CENTER_NONE ? settings.fft_n / 2.0 / sample_rate : 0;
}

}  // namespace sorvo_tool
