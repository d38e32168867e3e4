#include <algorithm>
#include <filesystem>
#include <limits>
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

void reflect_ends(std::vector<float>& samples, int pad_n, const std::string& file) {
    const auto n = static_cast<std::size_t>(pad_n);
    if (n == 0) return;
    if (samples.size() <= n || samples.size() + 2 * n > std::numeric_limits<int>::max())
        throw Failure(Exit::input_failed, file,
                      "cannot be extended, " + counted(samples.size(), "sample"),
                      "more than " + std::to_string(pad_n) + " needed, --pad",
                      "give a longer sound or a smaller --pad");
    std::vector<float> padded(samples.size() + 2 * n);
    std::reverse_copy(samples.begin() + 1, samples.begin() + 1 + pad_n, padded.begin());
    std::copy(samples.begin(), samples.end(), padded.begin() + pad_n);
    std::reverse_copy(samples.end() - 1 - pad_n, samples.end() - 1, padded.end() - pad_n);
    samples = std::move(padded);
}

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

std::vector<float> mel_spectrogram(const MelSettings& mel, const Signal& signal, int frame_n,
                                   const std::string& file) {
    const FrameSettings& frame = mel.frame;
    std::vector<float> result(static_cast<std::size_t>(mel.mel_n) *
                              static_cast<std::size_t>(frame_n));
    check_status(sorvoAudioGetMelSpectrogram(
                     result.data(), signal.samples.data(), signal.sample_n(), signal.sample_rate,
                     frame.fft_n, frame.hop_n, frame.win_n, frame.window, frame_n, frame.center,
                     mel.power, frame.norm, mel.f_min, upper_hz(mel, signal.sample_rate), mel.mel_n,
                     mel.mel_norm, mel.mel_formula),
                 "sorvoAudioGetMelSpectrogram", file);
    return result;
}

// Where the sound is loudest: a number that a reader can find in the picture.
void report_peak(const std::vector<float>& values, const Picture& picture, Report& report) {
    const auto peak =
        static_cast<std::size_t>(std::max_element(values.begin(), values.end()) - values.begin());
    const std::size_t band = peak / picture.column_n;
    const std::size_t column = peak % picture.column_n;
    const double seconds =
        picture.first_seconds + static_cast<double>(column) * picture.seconds_per_column;
    report.facts.add("loudest", "band " + std::to_string(band) + ", " +
                                    short_number(std::round(picture.row_hz[band])) + " Hz, at " +
                                    short_number(std::round(seconds * 1000) / 1000) + " s");
}

Report run(const MelSettings& mel, bool raw, const Job& job) {
    Report report;
    Signal signal = load_signal(job.input, mel.sample_rate, report);
    reflect_ends(signal.samples, mel.pad_n, job.input);
    const int frame_n = count_frames(mel.frame, signal.sample_n(), job.input);
    std::vector<float> values = mel_spectrogram(mel, signal, frame_n, job.input);
    note_empty_bands(mel, signal.sample_rate, job.input, report);

    std::vector<float> decibels;
    if (mel.power > 0) decibels = to_decibels(values, mel.power, mel.top_db, job.input);
    if (mel.in_db) values = decibels;
    Picture picture = picture_of(
        mel.power > 0 ? std::move(decibels) : values, mel.frame, frame_n, signal.sample_rate,
        "Mel spectrogram of " + std::filesystem::path(job.input).filename().string());
    picture.frequency_label = "Frequency (Hz, mel scale)";
    picture.row_hz = band_centres(mel, signal.sample_rate);
    // The reflected samples lie before the beginning.
    picture.first_seconds -= static_cast<double>(mel.pad_n) / signal.sample_rate;

    report.facts.add("shape", std::vector<std::int64_t>{mel.mel_n, frame_n});
    report.facts.add("frame_step_ms", picture.seconds_per_column * 1000);
    report.facts.add("unit", std::string(mel.in_db        ? "dB below the maximum"
                                         : mel.power == 2 ? "power"
                                         : mel.power == 1 ? "magnitude"
                                                          : "magnitude to the power of --power"));
    report_range(values, report);
    report_peak(values, picture, report);
    write_features(
        job,
        {{static_cast<std::size_t>(mel.mel_n), static_cast<std::size_t>(frame_n)}, false, values},
        picture, raw);
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
    add_examples(*app, {"mel speech.wav -o speech.npy --picture speech.png --db",
                        "mel speech.wav -o whisper.npy --preset whisper",
                        "mel recordings/ -o features/ -j 2 --n-fft 400 --hop-length 160"});
    return {app, [=]() mutable {
                const MelSettings mel = settle(options->mel);
                command.run = [&](const Job& job) { return run(mel, options->raw, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
