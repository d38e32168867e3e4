// Parameters of stft and istft beyond the framing.
#pragma once

#include <optional>

#include "settings/frame_settings.h"

namespace sorvo_tool {

struct StftSettings {
    FrameSettings frame;
    float power = 0;  // 0: complex
    bool in_db = false;
    float top_db = 80;
};

struct StftOptions {
    FrameOptions frame;
    std::optional<float> power, top_db;
    bool in_db = false;
};

void add_stft_options(CLI::App& app, StftOptions& options);
StftSettings settle(const StftOptions& options);

struct IstftOptions {
    FrameOptions frame;
    int sample_rate = 0;
    std::optional<int> length;
};

void add_istft_options(CLI::App& app, IstftOptions& options);

// The framing of a spectrum with `freq_n` bins.
FrameSettings settle(const IstftOptions& options, int freq_n);

}  // namespace sorvo_tool
