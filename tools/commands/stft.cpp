#include <sorvo_audio.h>

#include <filesystem>
#include <memory>

#include "commands/command.h"
#include "commands/features.h"
#include "settings/stft_settings.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    StftOptions stft;
    PictureStyle style;
};

// Appends frames to a table of complex numbers, or of the magnitudes raised to the power.
void append_frames(const StftSettings& stft, const float* samples, int sample_n, int frame_n,
                   const std::string& file, Table& table) {
    const FrameSettings& frame = stft.frame;
    std::vector<float> pairs(2 * table.row_n() * static_cast<std::size_t>(frame_n));
    check_status(sorvoAudioGetSpectrogram(pairs.data(), samples, sample_n, frame.fft_n, frame.hop_n,
                                          frame.win_n, frame.window, frame_n,
                                          SORVO_AUDIO_CENTER_NONE, stft.power, frame.norm),
                 "sorvoAudioGetSpectrogram", file);
    if (!table.is_complex()) {
        for (std::size_t i = 0; 2 * i < pairs.size(); ++i) pairs[i] = pairs[2 * i];
        pairs.resize(pairs.size() / 2);
    }
    table.append(pairs.data(), static_cast<std::size_t>(frame_n));
}

Change powers_of_complex(const std::string& file) {
    return [=](std::vector<float>& pairs) {
        check_status(sorvoAudioComplexNorm(pairs.data(), pairs.data(),
                                           static_cast<int>(pairs.size() / 2), 2),
                     "sorvoAudioComplexNorm", file);
        pairs.resize(pairs.size() / 2);
    };
}

Report run(const StftSettings& stft, const Options& options, const Job& job) {
    const int freq_n = stft.frame.fft_n / 2 + 1;
    const bool is_complex = !(stft.power > 0);
    SignalReader signal(job.input, options.batch.reading, 0);
    Table table(static_cast<std::size_t>(freq_n), is_complex, folder_of(job));
    FrameCutter cutter(stft.frame, frames_at_once(stft.frame),
                       [&](const float* samples, int sample_n, int frame_n) {
                           append_frames(stft, samples, sample_n, frame_n, job.input, table);
                       });
    std::vector<float> samples;
    while (signal.read(samples)) cutter.push(samples);
    cutter.flush();
    if (cutter.frame_n() == 0) throw too_short(stft.frame, cutter.sample_n(), job.input);

    Change decibels;
    if (is_drawn(job) || stft.in_db)
        decibels =
            Decibels(table, is_complex ? powers_of_complex(job.input) : powers_of(stft.power),
                     stft.top_db, job.input);
    Picture picture;
    picture.title = "Spectrogram of " + std::filesystem::path(job.input).filename().string();
    picture.frequency_label = "Frequency (Hz)";
    picture.first_seconds = first_frame_seconds(stft.frame, signal.sample_rate());
    picture.seconds_per_column = static_cast<double>(stft.frame.hop_n) / signal.sample_rate();
    for (int bin = 0; bin < freq_n; ++bin)
        picture.row_hz.push_back(static_cast<double>(bin) * signal.sample_rate() /
                                 stft.frame.fft_n);
    const Change nothing = [](std::vector<float>&) {};
    const Range range = write_features(job, table, stft.in_db ? decibels : nothing, decibels,
                                       picture, options.style);

    Report report;
    signal.describe(report);
    report.facts.add(
        "shape", std::vector<std::int64_t>{freq_n, static_cast<std::int64_t>(table.column_n())});
    report.facts.add("hz_per_bin", static_cast<double>(signal.sample_rate()) / stft.frame.fft_n);
    report.facts.add("frame_step_ms", 1000.0 * stft.frame.hop_n / signal.sample_rate());
    report.facts.add("unit", std::string(stft.in_db        ? "dB below the maximum"
                                         : is_complex      ? "complex amplitude"
                                         : stft.power == 2 ? "power"
                                         : stft.power == 1 ? "magnitude"
                                                           : "magnitude to the power of --power"));
    range.describe(report, !is_complex);
    return report;
}

}  // namespace

Command add_stft_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("stft", "Spectrogram of a sound, complex or as powers");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"stft", {".npy", ".csv", ".png"}, true, true, {}};
    add_batch_options(*app, options->batch, command);
    add_picture_options(*app, options->style, true);
    add_stft_options(*app, options->stft);
    add_examples(*app, {"stft speech.wav -o spectrum.npy", "stft speech.wav -o speech.png",
                        "stft recordings/ -o spectra/ --n-fft 1024 --power 2 --center zeros"});
    return {app, [=]() mutable {
                const StftSettings stft = settle(options->stft);
                command.run = [&](const Job& job) { return run(stft, *options, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
