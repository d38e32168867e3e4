#include <limits>
#include <memory>

#include "commands/command.h"
#include "commands/sounds.h"
#include "settings/stft_settings.h"
#include "support/array.h"

namespace sorvo_tool {
namespace {

struct Options {
    BatchOptions batch;
    IstftOptions istft;
    SoundOptions sound;
};

// [freq_n][frame_n], complex; a last dimension of 2 stands for real and imaginary part as well.
Array load_spectrum(const std::string& path) {
    Array array = read_npy(path);
    if (!array.is_complex && array.shape.size() == 3 && array.shape[2] == 2) {
        array.is_complex = true;
        array.shape.pop_back();
    }
    constexpr std::size_t most = std::numeric_limits<int>::max();
    if (!array.is_complex || array.shape.size() != 2 || array.shape[0] < 2 || array.shape[1] < 1 ||
        array.shape[0] > most / 2 || array.shape[1] > most)
        throw Failure(Exit::input_failed, path, "is no complex spectrum of bins x frames",
                      "2 bins and 1 frame at least", "make it with sorvo-audio stft, --power 0");
    return array;
}

Report run(const IstftOptions& options, const SoundOptions& sound_options, const Job& job) {
    const Array spectrum = load_spectrum(job.input);
    const auto freq_n = static_cast<int>(spectrum.shape[0]);
    const auto frame_n = static_cast<int>(spectrum.shape[1]);
    const FrameSettings frame = settle(options, freq_n);
    int sample_n = 0;
    const int status =
        sorvoAudioGetSampleLen(&sample_n, frame_n, freq_n, frame.hop_n, frame.center);
    sample_n = options.length.value_or(sample_n);
    if (status != SORVO_AUDIO_OK || sample_n < 1)
        throw Failure(
            Exit::input_failed, job.input,
            "gives no sound of a length that can be, " + std::to_string(frame_n) + " frames",
            "1 to 2147483647 samples", "give another --hop-length, or --length");

    Sound sound;
    sound.format.sample_rate = options.sample_rate;
    sound.format.sample_n = sample_n;
    if (sound_options.sample_format)
        sound.format.sample_format = static_cast<SampleFormat>(*sound_options.sample_format);
    sound.channels.emplace_back(static_cast<std::size_t>(sample_n));
    check_status(sorvoAudioGetInverseSpectrogram(sound.channels[0].data(), spectrum.data.data(),
                                                 frame_n, freq_n, frame.hop_n, frame.win_n,
                                                 frame.window, sample_n, frame.center, frame.norm),
                 "sorvoAudioGetInverseSpectrogram", job.input);
    Report report;
    report.seconds = sound.seconds();
    report.facts.add("shape", std::vector<std::int64_t>{freq_n, frame_n});
    report.facts.add("n_fft", number(frame.fft_n));
    report.facts.add("seconds", sound.seconds());
    write_sound(job, sound, report);
    return report;
}

}  // namespace

Command add_istft_command(CLI::App& root) {
    CLI::App* app = root.add_subcommand("istft", "Sound of a complex spectrogram");
    const auto options = std::make_shared<Options>();
    BatchCommand command{"istft", sound_formats, false, false, {}};
    add_batch_options(*app, options->batch, command);
    add_istft_options(*app, options->istft);
    add_sound_options(*app, options->sound, false);
    add_examples(*app, {"istft spectrum.npy -o again.wav --sample-rate 16000",
                        "istft spectrum.npy -o again.flac --sample-rate 16000 --length 71407",
                        "istft spectra/ -o sounds/ --sample-rate 16000 --hop-length 128"});
    return {app, [=]() mutable {
                command.run = [&](const Job& job) {
                    return run(options->istft, options->sound, job);
                };
                return run_batch(options->batch, command);
            }};
}

}  // namespace sorvo_tool
