#include <algorithm>
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
    bool raw = false;
};

// [freq_n][frame_n] pairs, complex or (power, 0).
std::vector<float> spectrogram(const StftSettings& stft, const Signal& signal, int frame_n,
                               const std::string& file) {
    const FrameSettings& frame = stft.frame;
    const auto freq_n = static_cast<std::size_t>(frame.fft_n / 2 + 1);
    std::vector<float> result(2 * freq_n * static_cast<std::size_t>(frame_n));
    check_status(sorvoAudioGetSpectrogram(result.data(), signal.samples.data(), signal.sample_n(),
                                          frame.fft_n, frame.hop_n, frame.win_n, frame.window,
                                          frame_n, frame.center, stft.power, frame.norm),
                 "sorvoAudioGetSpectrogram", file);
    return result;
}

std::vector<float> real_parts(const std::vector<float>& pairs) {
    std::vector<float> result(pairs.size() / 2);
    for (std::size_t i = 0; i < result.size(); ++i) result[i] = pairs[2 * i];
    return result;
}

std::vector<float> powers(const std::vector<float>& pairs, int frame_n, const std::string& file) {
    std::vector<float> result(pairs.size() / 2);
    const auto row_n = static_cast<std::size_t>(frame_n);
    for (std::size_t start = 0; start < result.size(); start += row_n)
        check_status(sorvoAudioComplexNorm(&result[start], &pairs[2 * start], frame_n, 2),
                     "sorvoAudioComplexNorm", file);
    return result;
}

Report run(const StftSettings& stft, bool raw, const Job& job) {
    Report report;
    const Signal signal = load_signal(job.input, 0, report);
    const int frame_n = count_frames(stft.frame, signal.sample_n(), job.input);
    const int freq_n = stft.frame.fft_n / 2 + 1;
    const bool is_complex = !(stft.power > 0);

    Array array{{static_cast<std::size_t>(freq_n), static_cast<std::size_t>(frame_n)},
                is_complex,
                spectrogram(stft, signal, frame_n, job.input)};
    if (!is_complex) array.data = real_parts(array.data);
    const bool is_drawn =
        !job.picture.empty() || std::filesystem::path(job.output).extension() == ".png";
    std::vector<float> decibels;
    if (is_drawn || stft.in_db)
        decibels = is_complex ? to_decibels(powers(array.data, frame_n, job.input), 2, stft.top_db,
                                            job.input)
                              : to_decibels(array.data, stft.power, stft.top_db, job.input);
    if (stft.in_db) array.data = decibels;

    report.facts.add("shape", std::vector<std::int64_t>{freq_n, frame_n});
    report.facts.add("hz_per_bin", static_cast<double>(signal.sample_rate) / stft.frame.fft_n);
    report.facts.add("frame_step_ms", 1000.0 * stft.frame.hop_n / signal.sample_rate);
    report.facts.add("unit", std::string(stft.in_db        ? "dB below the maximum"
                                         : is_complex      ? "complex amplitude"
                                         : stft.power == 2 ? "power"
                                         : stft.power == 1 ? "magnitude"
                                                           : "magnitude to the power of --power"));
    if (is_complex)
        count_not_finite(array.data, "value", "written", report);
    else
        report_range(array.data, report);

    Picture picture;
    if (is_drawn) {
        picture =
            picture_of(std::move(decibels), stft.frame, frame_n, signal.sample_rate,
                       "Spectrogram of " + std::filesystem::path(job.input).filename().string());
        picture.frequency_label = "Frequency (Hz)";
        for (int bin = 0; bin < freq_n; ++bin)
            picture.row_hz.push_back(static_cast<double>(bin) * signal.sample_rate /
                                     stft.frame.fft_n);
    }
    write_features(job, array, picture, raw);
    return report;
}

}  // namespace

Command add_stft_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("stft", "Spectrogram of a sound, complex or as powers");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"stft", {".npy", ".csv", ".png"}, true, true, {}};
    add_batch_options(*app, options->batch, command);
    app->add_flag("--raw", options->raw, "Draw one pixel for each cell, without axes");
    add_stft_options(*app, options->stft);
    add_examples(*app, {"stft speech.wav -o spectrum.npy", "stft speech.wav -o speech.png",
                        "stft recordings/ -o spectra/ --n-fft 1024 --power 2 --center zeros"});
    return {app, [=]() mutable {
                const StftSettings stft = settle(options->stft);
                command.run = [&](const Job& job) { return run(stft, options->raw, job); };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
