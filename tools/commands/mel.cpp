#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <utility>

#include "commands/command.h"
#include "commands/features.h"
#include "settings/mel_settings.h"
#include "support/cepstra.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    MelOptions mel;
    PictureStyle style;
    int coefficient_n = 20;  // of mfcc
};

// [mel_n][freq_n]
std::vector<float> mel_bank(const MelSettings& mel, int sample_rate, const std::string& file) {
    const int freq_n = mel.frame.fft_n / 2 + 1;
    std::vector<float> bank(static_cast<std::size_t>(mel.mel_n) * static_cast<std::size_t>(freq_n));
    check_status(sorvoAudioGetFBMatrix(bank.data(), freq_n, mel.f_min, upper_hz(mel, sample_rate),
                                       mel.mel_n, sample_rate, mel.mel_norm, mel.mel_formula),
                 "sorvoAudioGetFBMatrix", file);
    return bank;
}

// Bands so narrow that no bin lies in them are zero throughout, which is seldom meant.
void note_empty_bands(const MelSettings& mel, int sample_rate, const std::string& file,
                      Report& report) {
    const int freq_n = mel.frame.fft_n / 2 + 1;
    const std::vector<float> bank = mel_bank(mel, sample_rate, file);
    std::size_t empty_n = 0;
    for (auto row = bank.begin(); row != bank.end(); row += freq_n)
        empty_n += std::all_of(row, row + freq_n, [](float weight) { return weight == 0; });
    if (empty_n > 0)
        report.notes.push_back(std::to_string(empty_n) + " of " +
                               counted(static_cast<std::size_t>(mel.mel_n), "band") +
                               " hold no bin and are all zero; raise --n-fft or lower --n-mels");
}

// The bands [mel_n][frame_n] where a constant is added to the squared magnitudes.
void offset_bands(std::vector<float>& bands, const MelSettings& mel, int sample_rate,
                  const float* samples, int sample_n, int frame_n, const std::string& file) {
    const FrameSettings& frame = mel.frame;
    const int freq_n = frame.fft_n / 2 + 1;
    const auto cell_n = static_cast<std::size_t>(freq_n) * static_cast<std::size_t>(frame_n);
    std::vector<float> pairs(2 * cell_n);
    check_status(sorvoAudioGetSpectrogram(pairs.data(), samples, sample_n, frame.fft_n, frame.hop_n,
                                          frame.win_n, frame.window, frame_n,
                                          SORVO_AUDIO_CENTER_NONE, 2, frame.norm),
                 "sorvoAudioGetSpectrogram", file);
    std::vector<float> magnitudes(cell_n);
    for (std::size_t i = 0; i < cell_n; ++i)
        magnitudes[i] = std::sqrt(pairs[2 * i] + mel.power_offset);
    const std::vector<float> bank = mel_bank(mel, sample_rate, file);
    check_status(sorvoAudioConvertToMel(bands.data(), magnitudes.data(), bank.data(), freq_n,
                                        frame_n, mel.mel_n),
                 "sorvoAudioConvertToMel", file);
}

void append_frames(const MelSettings& mel, int sample_rate, const float* samples, int sample_n,
                   int frame_n, const std::string& file, Table& table) {
    const FrameSettings& frame = mel.frame;
    std::vector<float> bands(table.row_n() * static_cast<std::size_t>(frame_n));
    if (mel.power_offset > 0)
        offset_bands(bands, mel, sample_rate, samples, sample_n, frame_n, file);
    else
        check_status(
            sorvoAudioGetMelSpectrogram(
                bands.data(), samples, sample_n, sample_rate, frame.fft_n, frame.hop_n, frame.win_n,
                frame.window, frame_n, SORVO_AUDIO_CENTER_NONE, mel.power, frame.norm, mel.f_min,
                upper_hz(mel, sample_rate), mel.mel_n, mel.mel_norm, mel.mel_formula),
            "sorvoAudioGetMelSpectrogram", file);
    table.append(bands.data(), static_cast<std::size_t>(frame_n));
}

// Samples that a sound is to have at least, and must not exceed; 0: any number.
std::int64_t padded_count(const MelSettings& mel, int sample_rate) {
    return static_cast<std::int64_t>(std::round(mel.pad_to_seconds * sample_rate));
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
    const std::int64_t wanted_n = padded_count(mel, signal.sample_rate());
    const auto push = [&] {
        sample_n += static_cast<std::int64_t>(samples.size());
        if (wanted_n > 0 && sample_n > wanted_n)
            throw Failure(Exit::input_failed, job.input,
                          "has more than " + counted(static_cast<std::size_t>(wanted_n), "sample"),
                          "--pad-to-seconds " + short_number(mel.pad_to_seconds),
                          "split the sound, or give the seconds of the longest");
        cutter.push(reflector.push(samples));
    };
    while (signal.read(samples)) push();
    while (sample_n < wanted_n) {
        samples.assign(static_cast<std::size_t>(std::min<std::int64_t>(wanted_n - sample_n, 65536)),
                       0);
        push();
    }
    if (sample_n < least_samples(mel))
        throw Failure(Exit::input_failed, job.input,
                      "is too short, " + counted(static_cast<std::size_t>(sample_n), "sample"),
                      "these features need " + std::to_string(least_samples(mel)) +
                          ", for --n-fft " + std::to_string(mel.frame.fft_n),
                      "give a longer sound, a smaller --n-fft, or --pad-to-seconds");
    cutter.push(reflector.flush());
    cutter.flush();
    const std::int64_t spare_n = cutter.frame_n() - frame_count(mel, sample_n);
    if (spare_n > 0) table.drop_columns(static_cast<std::size_t>(spare_n));
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

std::string unit_of(const MelSettings& mel) {
    if (mel.in_db) return "dB below the maximum";
    const std::string bands = mel.power == 2   ? "power"
                              : mel.power == 1 ? "magnitude"
                                               : "magnitude to the power of --power";
    if (mel.compression == Compression::log) return "natural logarithm of " + bands;
    if (mel.compression == Compression::whisper) return "(4 + log10 of " + bands + ") / 4";
    return bands;
}

// What becomes of the bands of a table before they are written.
Change last_step(const MelSettings& mel, const Table& table, const Change& decibels,
                 const std::string& file) {
    if (mel.in_db) return decibels;
    float largest = 0;
    if (mel.compression == Compression::whisper)
        table.for_each_piece(
            [&](const std::vector<float>& cells) { largest = largest_of(cells, largest); });
    return [=](std::vector<float>& cells) { compress(cells, mel.compression, largest, file); };
}

Report run(const MelSettings& mel, const Options& options, const Job& job) {
    SignalReader signal(job.input, options.batch.reading, mel.sample_rate);
    const int sample_rate = signal.sample_rate();
    const Table table = mel_spectrogram(mel, signal, job);

    Change decibels = [](std::vector<float>&) {};
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
    const Range range = write_features(job, table, last_step(mel, table, decibels, job.input),
                                       decibels, picture, options.style);

    Report report;
    signal.describe(report);
    if (mel.pad_to_seconds > 0) report.facts.add("padded_to_seconds", mel.pad_to_seconds);
    note_empty_bands(mel, sample_rate, job.input, report);
    report.facts.add(
        "shape", std::vector<std::int64_t>{mel.mel_n, static_cast<std::int64_t>(table.column_n())});
    report.facts.add("frame_step_ms", picture.seconds_per_column * 1000);
    report.facts.add("unit", unit_of(mel));
    range.describe(report, true);
    report_peak(range.peak(), picture, table.column_n(), report);
    return report;
}

// The bands come first, since every level depends on the largest of them.
Report run_mfcc(const MelSettings& mel, const Options& options, const Job& job) {
    SignalReader signal(job.input, options.batch.reading, mel.sample_rate);
    const Table bands = mel_spectrogram(mel, signal, job);
    float largest = 0;
    bands.for_each_piece(
        [&](const std::vector<float>& cells) { largest = largest_of(cells, largest); });
    const CosineTransform transform(mel.mel_n, options.coefficient_n, job.input);
    Table table(static_cast<std::size_t>(options.coefficient_n), false, folder_of(job));
    const auto block_n = static_cast<std::size_t>(frames_at_once(mel.frame));
    for (std::size_t done = 0; done < bands.column_n(); done += block_n) {
        const std::size_t frame_n = std::min(block_n, bands.column_n() - done);
        std::vector<float> levels = bands.columns(done, frame_n);
        to_levels(levels, largest, job.input);
        table.append(transform(std::move(levels)).data(), frame_n);
    }
    const Change nothing = [](std::vector<float>&) {};
    Picture none;
    const Range range = write_features(job, table, nothing, nothing, none, options.style);

    Report report;
    signal.describe(report);
    note_empty_bands(mel, signal.sample_rate(), job.input, report);
    report.facts.add("shape",
                     std::vector<std::int64_t>{options.coefficient_n,
                                               static_cast<std::int64_t>(table.column_n())});
    report.facts.add("frame_step_ms", 1000.0 * mel.frame.hop_n / signal.sample_rate());
    range.describe(report, true);
    return report;
}

}  // namespace

Command add_mfcc_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("mfcc", "Mel-frequency cepstral coefficients of a sound");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"mfcc", {".npy", ".csv"}, true, false, {}};
    add_batch_options(*app, options->batch, command);
    add_coefficient_option(*app, options->coefficient_n);
    add_band_options(*app, options->mel);
    add_ratio_option(*app, options->batch.reading);
    add_examples(*app, {"mfcc speech.wav -o mfcc.npy", "mfcc speech.wav -o mfcc.csv --n-mfcc 13",
                        "mfcc recordings/ -o cepstra/ --preset librosa"});
    return {app, [=]() mutable {
                const MelSettings mel = settle(options->mel);
                check_coefficients(options->coefficient_n, mel);
                command.run = [&](const Job& job) { return run_mfcc(mel, *options, job); };
                return run_batch(options->batch, command);
            }};
}

Command add_mel_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand(
        "mel", "Mel spectrogram of a sound, or the features that a model takes");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"mel", {".npy", ".csv", ".png"}, true, true, {}};
    add_batch_options(*app, options->batch, command);
    add_picture_options(*app, options->style, false);
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
