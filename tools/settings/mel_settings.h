// All parameters of a mel spectrogram.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "settings/frame_settings.h"
#include "support/compression.h"

namespace sorvo_tool {

struct MelSettings {
    FrameSettings frame;
    int sample_rate = 0;  // 0: that of the file; else the sound is converted to it first
    int pad_n = 0;        // samples reflected at both ends before framing
    float power = 2;
    float power_offset = 0;  // added to the squared magnitudes; needs a power of 1
    int mel_n = 80;
    float f_min = 0;
    float f_max = 0;  // 0: half the sample rate
    int mel_norm = SORVO_AUDIO_MEL_NORM_AREA;
    int mel_formula = SORVO_AUDIO_MEL_SLANEY;
    std::optional<int> extra_frame_n;  // at most sample_n / hop_n + this many frames are taken
    double pad_to_seconds = 0;         // zeros behind the sound up to this length
    Compression compression = Compression::none;
    bool in_db = false;
    float top_db = 80;
};

struct MelOptions {
    FrameOptions frame;
    std::string preset;
    std::optional<int> sample_rate, pad_n, mel_n, mel_norm, mel_formula;
    std::optional<float> power, f_min, f_max, top_db;
    double pad_to_seconds = 0;
    bool in_db = false;
    bool linear = false;
};

extern const Choices mel_scale_choices;
extern const Choices mel_norm_choices;

// All but those of logarithms.
void add_band_options(CLI::App& app, MelOptions& options);
void add_mel_options(CLI::App& app, MelOptions& options);

// The preset, or the defaults, with the options put in place; throws a Failure if they do not fit
// together.
MelSettings settle(const MelOptions& options);

// Of cepstra, which `coefficient_n` is to hold.
void add_coefficient_option(CLI::App& app, int& coefficient_n);
// Throws a Failure where there are fewer bands.
void check_coefficients(int coefficient_n, const MelSettings& settings);

// Frames of a signal of `sample_n` samples; 0 if it is too short.
std::int64_t frame_count(const MelSettings& settings, std::int64_t sample_n);

// The fewest samples that have a frame.
std::int64_t least_samples(const MelSettings& settings);

// The upper end of the bank at a rate.
float upper_hz(const MelSettings& settings, int sample_rate);

// Centre frequencies of the bands.
std::vector<double> band_centres(const MelSettings& settings, int sample_rate);

}  // namespace sorvo_tool
