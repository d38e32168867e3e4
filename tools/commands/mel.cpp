#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>

#include "commands/command.h"
#include "commands/features.h"
#include "settings/mel_settings.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    MelOptions mel;
    bool raw = false;
};

// Bands so narrow that no bin lies in them are zero throughout, which is seldom meant.
void note_empty_bands(const MelSettings& mel, int sample_rate, const std::string& file,
                      Report& report) {
    const int freq_n = mel.frame.fft_n / 2 + 1;
    std::vector<float> bank(static_cast<std::size_t>(mel.mel_n) * static_cast<std::size_t>(freq_n));
    check_status(sorvoAudioGetFBMatrix(bank.data(), freq_n, mel.f_min, upper_hz(mel, sample_rate),
                                       mel.mel_n, sample_rate, mel.mel_norm, mel.mel_formula),
                 "sorvoAudioGetFBMatrix", file);
    std::size_t empty_n = 0;
    for (auto row = bank.begin(); row != bank.end(); row += freq_n)
        empty_n += std::all_of(row, row + freq_n, [](float weight) { return weight == 0; });
    if (empty_n > 0)
        report.notes.push_back(std::to_string(empty_n) + " of " +
                               counted(static_cast<std::size_t>(mel.mel_n), "band") +
                               " hold no bin and are all zero; raise --n-fft or lower --n-mels");
}

void append_frames(const MelSettings& mel, int sample_rate, const float* samples, int sample_n,
                   int frame_n, const std::string& file, Table& table) {
    const FrameSettings& frame = mel.frame;
    std::vector<float> bands(table.row_n() * static_cast<std::size_t>(frame_n));
    check_status(sorvoAudioGetMelSpectrogram(bands.data(), samples, sample_n, sample_rate,
                                             frame.fft_n, frame.hop_n, frame.win_n, frame.window,
                                             frame_n, SORVO_AUDIO_CENTER_NONE, mel.power,
                                             frame.norm, mel.f_min, upper_hz(mel, sample_rate),
                                             mel.mel_n, mel.mel_norm, mel.mel_formula),
                 "sorvoAudioGetMelSpectrogram", file);
    table.append(bands.data(), static_cast<std::size_t>(frame_n));
}

// All frames of a sound.
Table mel_spectrogram(const MelSettings& mel, SignalReader& signal, const Job& job) {
    Table table(static_cast<std::size_t>(mel.mel_n), false, folder_of(job));
    FrameCutter cutter(
        mel.frame, frames_at_once(mel.frame), [&](const float* samples, int sample_n, int frame_n) {
            append_frames(mel, signal.sample_rate(), samples, sample_n, frame_n, job.input, table);
        });
    EndReflector reflector(mel.pad_n);
    std::vector<float> samples;
    std::int64_t sample_n = 0;
    while (signal.read(samples)) {
        sample_n += static_cast<std::int64_t>(samples.size());
        cutter.push(reflector.push(samples));
    }
    if (sample_n <= mel.pad_n)
        throw Failure(
            Exit::input_failed, job.input,
            "cannot be extended, " + counted(static_cast<std::size_t>(sample_n), "sample"),
            "more than " + std::to_string(mel.pad_n) + " needed, --pad",
            "give a longer sound or a smaller --pad");
    cutter.push(reflector.flush());
    cutter.flush();
    if (cutter.frame_n() == 0) throw too_short(mel.frame, cutter.sample_n(), job.input);
    return table;
}

// Where the sound is loudest: a number that a reader can find in the picture.
void report_peak(std::size_t peak, const Picture& picture, std::size_t column_n, Report& report) {
    const std::size_t band = peak / column_n;
    const double seconds =
        picture.first_seconds + static_cast<double>(peak % column_n) * picture.seconds_per_column;
    report.facts.add("loudest", "band " + std::to_string(band) + ", " +
                                    short_number(std::round(picture.row_hz[band])) + " Hz, at " +
                                    short_number(std::round(seconds * 1000) / 1000) + " s");
}

Report run(const MelSettings& mel, const Options& options, const Job& job) {
    SignalReader signal(job.input, options.batch.reading, mel.sample_rate);
    const int sample_rate = signal.sample_rate();
    const Table table = mel_spectrogram(mel, signal, job);

    const Change nothing = [](std::vector<float>&) {};
    Change decibels = nothing;
    if (mel.power > 0 && (mel.in_db || is_drawn(job)))
        decibels = Decibels(table, powers_of(mel.power), mel.top_db, job.input);
    Picture picture;
    picture.title = "Mel spectrogram of " + std::filesystem::path(job.input).filename().string();
    picture.frequency_label = "Frequency (Hz, mel scale)";
    picture.row_hz = band_centres(mel, sample_rate);
    picture.seconds_per_column = static_cast<double>(mel.frame.hop_n) / sample_rate;
    // The reflected samples lie before the beginning.
    picture.first_seconds =
        first_frame_seconds(mel.frame, sample_rate) - static_cast<double>(mel.pad_n) / sample_rate;
    const Range range =
        write_features(job, table, mel.in_db ? decibels : nothing, decibels, picture, options.raw);

    Report report;
    signal.describe(report);
    note_empty_bands(mel, sample_rate, job.input, report);
    report.facts.add(
        "shape", std::vector<std::int64_t>{mel.mel_n, static_cast<std::int64_t>(table.column_n())});
    report.facts.add("frame_step_ms", picture.seconds_per_column * 1000);
    report.facts.add("unit", std::string(mel.in_db        ? "dB below the maximum"
                                         : mel.power == 2 ? "power"
                                         : mel.power == 1 ? "magnitude"
                                                          : "magnitude to the power of --power"));
    range.describe(report, true);
    report_peak(range.peak(), picture, table.column_n(), report);
    return report;
}

}  // namespace

Command add_mel_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("mel", "Mel spectrogram of a sound");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"mel", {".npy", ".csv", ".png"}, true, true, {}};
    add_batch_options(*app, options->batch, command);
    app->add_flag("--raw", options->raw, "Draw one pixel for each cell, without axes");
    add_mel_options(*app, options->mel);
    add_ratio_option(*app, options->batch.reading);
    add_examples(*app, {"mel speech.wav -o speech.npy --picture speech.png --db",
                        "mel speech.wav -o whisper.npy --preset whisper",
                        "mel recordings/ -o features/ -j 2 --n-fft 400 --hop-length 160"});
    return {app, [=]() mutable {
                const MelSettings mel = settle(options->mel);
                command.run = [&](const Job& job) { return run(mel, *options, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
