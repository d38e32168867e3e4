#include "settings/mel_settings.h"

#include <algorithm>
#include <cmath>

#include "blocks/frame_cutter.h"
#include "settings/presets.h"
#include "support/failure.h"
#include "support/text.h"

namespace sorvo_tool {

const Choices mel_scale_choices{{"slaney", SORVO_AUDIO_MEL_SLANEY}, {"htk", SORVO_AUDIO_MEL_HTK}};
const Choices mel_norm_choices{{"slaney", SORVO_AUDIO_MEL_NORM_AREA},
                               {"none", SORVO_AUDIO_MEL_NORM_NONE}};

void add_band_options(CLI::App& app, MelOptions& options) {
    app.add_option("--preset", options.preset,
                   "Make the features of a model; other options change its parameters")
        ->check(CLI::IsMember(preset_names()).description(""))
        ->type_name("NAME");
    app.add_option("--sample-rate", options.sample_rate, "Convert to this rate first [the file's]")
        ->check(at_least(1))
        ->type_name("HZ");
    app.add_option("--pad-to-seconds", options.pad_to_seconds,
                   "Append zeros up to this length, such as the 30 of whisper")
        ->check(at_least(0))
        ->check(at_most(1e6))
        ->type_name("S");
    app.add_option("--pad", options.pad_n, "Samples to reflect at both ends before framing [0]")
        ->check(at_least(0))
        ->type_name("N");
    add_frame_options(app, options.frame);
    app.add_option("--power", options.power, "Exponent of the magnitude: 1 or 2 are usual [2]")
        ->check(at_least(0))
        ->type_name("P");
    app.add_option("--n-mels", options.mel_n, "Bands, at most n-fft / 2 [80]")
        ->check(at_least(1))
        ->type_name("N");
    app.add_option("--fmin", options.f_min, "Lowest frequency [0]")
        ->check(at_least(0))
        ->type_name("HZ");
    app.add_option("--fmax", options.f_max, "Highest frequency [half the rate]")
        ->check(at_least(0))
        ->type_name("HZ");
    add_choice(app, "--mel-scale", options.mel_formula, mel_scale_choices, "Mel scale [slaney]");
    add_choice(app, "--mel-norm", options.mel_norm, mel_norm_choices,
               "Equal areas (slaney) or equal heights (none) of the triangles [slaney]");
}

void add_mel_options(CLI::App& app, MelOptions& options) {
    add_band_options(app, options);
    app.add_flag("--linear", options.linear,
                 "Write the bands alone, without the logarithm of the preset");
    app.add_flag("--db", options.in_db,
                 "Write decibels relative to the maximum, in place of that logarithm");
    app.add_option("--top-db", options.top_db,
                   "Decibels kept below the maximum; negative: all [80]")
        ->type_name("DB");
}

MelSettings settle(const MelOptions& options) {
    MelSettings settings = options.preset.empty() ? MelSettings{} : find_preset(options.preset).mel;
    apply(settings.frame, options.frame);
    settings.sample_rate = options.sample_rate.value_or(settings.sample_rate);
    settings.pad_n = options.pad_n.value_or(settings.pad_n);
    settings.power = options.power.value_or(settings.power);
    settings.mel_n = options.mel_n.value_or(settings.mel_n);
    settings.f_min = options.f_min.value_or(settings.f_min);
    settings.f_max = options.f_max.value_or(settings.f_max);
    settings.mel_norm = options.mel_norm.value_or(settings.mel_norm);
    settings.mel_formula = options.mel_formula.value_or(settings.mel_formula);
    settings.pad_to_seconds = options.pad_to_seconds;
    settings.in_db = options.in_db;
    if (options.linear || options.in_db) settings.compression = Compression::none;
    settings.top_db = options.top_db.value_or(settings.top_db);

    if (settings.mel_n > settings.frame.fft_n / 2)
        throw Failure(Exit::usage, "--n-mels",
                      std::to_string(settings.mel_n) + " bands are too many",
                      "at most " + std::to_string(settings.frame.fft_n / 2) + ", half of --n-fft",
                      "lower --n-mels or raise --n-fft");
    if (settings.in_db && !(settings.power > 0))
        throw Failure(Exit::usage, "--power", "0 leaves no level that --db could show", "",
                      "give --power 1 or 2");
    if (settings.power_offset > 0 && settings.power != 1)
        throw Failure(Exit::usage, "--power", "the preset " + options.preset + " takes magnitudes",
                      "--power 1", "leave out --power, or give another preset");
    if (options.linear && options.in_db)
        throw Failure(Exit::usage, "--db", "decibels are not linear", "",
                      "give --db or --linear, not both");
    return settings;
}

void add_coefficient_option(CLI::App& app, int& coefficient_n) {
    app.add_option("--n-mfcc", coefficient_n, "Coefficients, at most n-mels [20]")
        ->check(at_least(1))
        ->type_name("N");
}

void check_coefficients(int coefficient_n, const MelSettings& settings) {
    if (coefficient_n > settings.mel_n)
        throw Failure(Exit::usage, "--n-mfcc", std::to_string(coefficient_n) + " are too many",
                      "--n-mels " + std::to_string(settings.mel_n),
                      "lower --n-mfcc or raise --n-mels");
}

std::int64_t frame_count(const MelSettings& settings, std::int64_t sample_n) {
    if (sample_n < least_samples(settings)) return 0;
    const std::int64_t frame_n =
        count_frames(settings.frame, sample_n + 2 * std::int64_t{settings.pad_n});
    return settings.extra_frame_n
               ? std::min(frame_n, sample_n / settings.frame.hop_n + *settings.extra_frame_n)
               : frame_n;
}

std::int64_t least_samples(const MelSettings& settings) {
    const std::int64_t pad_n = settings.pad_n;
    const std::int64_t hops = 1 - settings.extra_frame_n.value_or(1);
    return std::max({settings.frame.fft_n - 2 * pad_n, pad_n + 1, hops * settings.frame.hop_n});
}

float upper_hz(const MelSettings& settings, int sample_rate) {
    const float f_max = settings.f_max > 0 ? settings.f_max : static_cast<float>(sample_rate) / 2;
    if (f_max > settings.f_min) return f_max;
    throw Failure(Exit::usage, "--fmin",
                  short_number(static_cast<double>(settings.f_min)) + " Hz is not below --fmax",
                  "--fmax " + short_number(static_cast<double>(f_max)),
                  "lower --fmin or raise --fmax");
}

std::vector<double> band_centres(const MelSettings& settings, int sample_rate) {
    // The Slaney scale is linear up to 1 kHz, which lies at 15 mel; from there on 27 mel are a
    // factor of 6.4.
    const bool is_htk = settings.mel_formula == SORVO_AUDIO_MEL_HTK;
    const auto mel_of = [&](double hz) {
        if (is_htk) return 2595 * std::log10(1 + hz / 700);
        return hz < 1000 ? hz * 3 / 200 : 15 + 27 * std::log(hz / 1000) / std::log(6.4);
    };
    const auto hz_of = [&](double mel) {
        if (is_htk) return 700 * (std::pow(10.0, mel / 2595) - 1);
        return mel < 15 ? mel * 200 / 3 : 1000 * std::pow(6.4, (mel - 15) / 27);
    };
    const double lowest = mel_of(static_cast<double>(settings.f_min));
    const double highest = mel_of(static_cast<double>(upper_hz(settings, sample_rate)));
    std::vector<double> centres;
    for (int band = 0; band < settings.mel_n; ++band)
        centres.push_back(hz_of(lowest + (highest - lowest) * (band + 1) / (settings.mel_n + 1)));
    return centres;
}

}  // namespace sorvo_tool
