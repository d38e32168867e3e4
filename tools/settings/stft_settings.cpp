#include "settings/stft_settings.h"

#include "support/failure.h"

namespace sorvo_tool {

void add_stft_options(CLI::App& app, StftOptions& options) {
    add_frame_options(app, options.frame);
    app.add_option("--power", options.power,
                   "0 complex numbers, 1 magnitudes, 2 powers, or another exponent [0]")
        ->check(at_least(0))
        ->type_name("P");
    app.add_flag("--db", options.in_db, "Write decibels relative to the maximum, of powers");
    app.add_option("--top-db", options.top_db,
                   "Decibels kept below the maximum; negative: all [80]")
        ->type_name("DB");
}

StftSettings settle(const StftOptions& options) {
    StftSettings settings;
    apply(settings.frame, options.frame);
    settings.in_db = options.in_db;
    settings.power = options.power.value_or(options.in_db ? 2.0f : 0.0f);
    settings.top_db = options.top_db.value_or(settings.top_db);
    if (settings.in_db && !(settings.power > 0))
        throw Failure(Exit::usage, "--power", "0 leaves no level that --db could show", "",
                      "give --power 1 or 2");
    return settings;
}

void add_istft_options(CLI::App& app, IstftOptions& options) {
    app.add_option("--sample-rate", options.sample_rate, "Rate of the sound, which .npy cannot say")
        ->required()
        ->check(at_least(1))
        ->type_name("HZ");
    app.add_option("--length", options.length,
                   "Samples to write [(frames - 1) times hop, + n-fft without centring]")
        ->check(at_least(1))
        ->type_name("N");
    add_frame_options(app, options.frame, false);
}

FrameSettings settle(const IstftOptions& options, int freq_n) {
    FrameSettings settings;
    settings.fft_n = 2 * (freq_n - 1);
    apply(settings, options.frame);
    return settings;
}

}  // namespace sorvo_tool
