// How a signal is cut into frames and transformed; shared by stft, istft and mel.
#pragma once

#include <sorvo_audio.h>

#include <optional>
#include <string>
#include <vector>

#include "support/options.h"

namespace sorvo_tool {

struct FrameSettings {
    int fft_n = 512;
    int hop_n = 0;  // 0: a quarter of win_n
    int win_n = 0;  // 0: fft_n
    int window = SORVO_AUDIO_WINDOW_HANN;
    int center = SORVO_AUDIO_CENTER_REFLECT;
    int norm = SORVO_AUDIO_NORM_NONE;
};

// What the command line says; what it does not say stays as it was.
struct FrameOptions {
    std::optional<int> fft_n, hop_n, win_n, window, center, norm;
};

extern const Choices window_choices;
extern const Choices center_choices;
extern const Choices norm_choices;

// --n-fft is left out where the input decides it.
void add_frame_options(CLI::App& app, FrameOptions& options, bool with_fft_n = true);

// Puts the options in place and fills in hop_n and win_n.
void apply(FrameSettings& settings, const FrameOptions& options);

// Seconds of the signal at which the first frame has its middle.
double first_frame_seconds(const FrameSettings& settings, int sample_rate);

}  // namespace sorvo_tool
