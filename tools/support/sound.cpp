#include "support/sound.h"

#include <sndfile.h>
#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <mutex>

#include "support/failure.h"
#include "support/output_file.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

constexpr sf_count_t block_n = 1 << 16;  // sample frames that are read or written at a time
constexpr int max_sample_n = std::numeric_limits<int>::max();

struct CloseFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using File = std::unique_ptr<SNDFILE, CloseFile>;

// Opens a file; otherwise puts the reason in `reason`, which libsndfile keeps for the process only.
File open_file(const std::string& path, int mode, SF_INFO& info, std::string& reason) {
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    File file(sf_open(path.c_str(), mode, &info));
    if (!file) reason = sf_strerror(nullptr);
    while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n')) reason.pop_back();
    return file;
}

SampleFormat sample_format_of(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_24:
        case SF_FORMAT_PCM_32:
            return SampleFormat::pcm24;
        case SF_FORMAT_FLOAT:
        case SF_FORMAT_DOUBLE:
            return SampleFormat::float32;
        default:
            return SampleFormat::pcm16;
    }
}

std::string format_name(int command, int format) {
    SF_FORMAT_INFO info{};
    info.format = format;
    sf_command(nullptr, command, &info, sizeof info);
    return info.name ? info.name : "unknown";
}

std::string ending_of(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return ending;
}

// Integers as libsndfile takes them, the sample in the upper bits: 1 is one step beyond full scale.
class Quantiser {
  public:
    explicit Quantiser(int bit_n)
        : scale_(std::ldexp(1.0, bit_n - 1)), unit_(1LL << (32 - bit_n)) {}

    int operator()(float sample) {
        const double level = std::nearbyint(static_cast<double>(sample) * scale_);
        const double held = std::clamp(level, -scale_, scale_ - 1);
        clipped_n_ += level != held;
        return static_cast<int>(static_cast<long long>(held) * unit_);
    }
    std::size_t clipped_n() const { return clipped_n_; }

  private:
    double scale_;
    long long unit_;
    std::size_t clipped_n_ = 0;
};

}  // namespace

Sound read_sound(const std::string& path) {
    std::string reason;
    SF_INFO info{};
    if (!std::filesystem::exists(path)) reason = "there is no such file";
    if (std::filesystem::is_directory(path)) reason = "it is a folder";
    const File file = reason.empty() ? open_file(path, SFM_READ, info, reason) : nullptr;
    if (!file)
        throw Failure(Exit::input_failed, path, "cannot be read as sound: " + reason, "",
                      "give a WAV, FLAC, Ogg, AIFF or MP3 file");
    Sound sound;
    sound.sample_rate = info.samplerate;
    sound.sample_format = sample_format_of(info.format);
    sound.file_type = format_name(SFC_GET_FORMAT_INFO, info.format & SF_FORMAT_TYPEMASK) + ", " +
                      format_name(SFC_GET_FORMAT_INFO, info.format & SF_FORMAT_SUBMASK);
    const auto channel_n = static_cast<std::size_t>(info.channels);
    sound.channels.resize(channel_n);

    std::vector<float> block(static_cast<std::size_t>(block_n) * channel_n);
    sf_count_t sample_n = 0;
    while (const sf_count_t read_n = sf_readf_float(file.get(), block.data(), block_n)) {
        if (read_n < 0) break;
        sample_n += read_n;
        if (sample_n > max_sample_n)
            throw Failure(Exit::input_failed, path, "is too long",
                          "limit " + std::to_string(max_sample_n) + " samples a channel",
                          "split it into shorter files");
        for (std::size_t channel = 0; channel < channel_n; ++channel)
            for (std::size_t i = 0; i < static_cast<std::size_t>(read_n); ++i)
                sound.channels[channel].push_back(block[i * channel_n + channel]);
    }
    if (sf_error(file.get()) != SF_ERR_NO_ERROR)
        throw Failure(Exit::input_failed, path,
                      "is damaged after " + counted(static_cast<std::size_t>(sample_n), "sample") +
                          ": " + sf_strerror(file.get()),
                      "", "mend or replace the file");
    if (sample_n == 0)
        throw Failure(Exit::input_failed, path, "holds no samples", "", "give a file with sound");
    return sound;
}

std::size_t write_sound(const std::string& path, const Sound& sound) {
    const bool is_flac = ending_of(path) == ".flac";
    SampleFormat format = sound.sample_format;
    if (is_flac && format == SampleFormat::float32) format = SampleFormat::pcm24;
    const bool is_float = format == SampleFormat::float32;
    const int bit_n = format == SampleFormat::pcm24 ? 24 : 16;

    for (const auto& channel : sound.channels)
        for (const float sample : channel)
            if (!is_float && !std::isfinite(sample))
                throw Failure(
                    Exit::input_failed, path,
                    "would hold samples that are infinite or not a number", "",
                    "mend the cause, or write .npy, or --sample-format float, to see them");

    SF_INFO info{};
    info.samplerate = sound.sample_rate;
    info.channels = static_cast<int>(sound.channels.size());
    info.format = (is_flac ? SF_FORMAT_FLAC : SF_FORMAT_WAV) | (is_float      ? SF_FORMAT_FLOAT
                                                                : bit_n == 24 ? SF_FORMAT_PCM_24
                                                                              : SF_FORMAT_PCM_16);
    Quantiser quantise(bit_n);
    write_then_rename(path, [&](const std::string& temporary) {
        std::string reason;
        File file = open_file(temporary, SFM_WRITE, info, reason);
        if (!file) throw cannot_write(path, reason);
        // The chunk holds the time of day; without it equal sounds are equal files.
        sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);

        const std::size_t channel_n = sound.channels.size();
        const auto sample_n = static_cast<std::size_t>(sound.sample_n());
        std::vector<float> floats;
        std::vector<int> integers;
        for (std::size_t start = 0; start < sample_n; start += static_cast<std::size_t>(block_n)) {
            const std::size_t end = std::min(sample_n, start + static_cast<std::size_t>(block_n));
            floats.clear();
            integers.clear();
            for (std::size_t i = start; i < end; ++i)
                for (std::size_t channel = 0; channel < channel_n; ++channel)
                    if (is_float)
                        floats.push_back(sound.channels[channel][i]);
                    else
                        integers.push_back(quantise(sound.channels[channel][i]));
            const auto count = static_cast<sf_count_t>(end - start);
            const sf_count_t written_n = is_float
                                             ? sf_writef_float(file.get(), floats.data(), count)
                                             : sf_writef_int(file.get(), integers.data(), count);
            if (written_n != count) throw cannot_write(path, sf_strerror(file.get()));
        }
        // Closing writes what is still held back; only then is a full disk certain to have shown.
        if (sf_close(file.release()) != SF_ERR_NO_ERROR)
            throw cannot_write(path, "the last block was refused");
    });
    return quantise.clipped_n();
}

std::vector<float> mix_down(const Sound& sound) {
    if (sound.channels.size() == 1) return sound.channels.front();
    std::vector<float> mono(sound.channels.front().size());
    for (std::size_t i = 0; i < mono.size(); ++i) {
        double sum = 0;
        for (const auto& channel : sound.channels) sum += static_cast<double>(channel[i]);
        mono[i] = static_cast<float>(sum / static_cast<double>(sound.channels.size()));
    }
    return mono;
}

std::vector<float> resample(const std::vector<float>& samples, int from_rate, int to_rate,
                            const std::string& file) {
    if (from_rate == to_rate) return samples;
    const auto src_n = static_cast<int>(samples.size());
    int dst_n = 0;
    if (src_n > max_sample_n - 2 ||
        sorvoAudioGetResampleLen(&dst_n, to_rate, src_n, from_rate) != SORVO_AUDIO_OK)
        throw Failure(Exit::input_failed, file,
                      "is too long for " + std::to_string(to_rate) + " Hz",
                      "limit " + std::to_string(max_sample_n) + " samples",
                      "split the file or choose a lower rate");
    // The library stops where the sample nearest to an output is the last one. Two zeros more, and
    // the outputs behind that come as well, the nearest sample of the very last being the first
    // zero.
    std::vector<float> extended = samples;
    extended.resize(samples.size() + 2);
    std::vector<float> result(static_cast<std::size_t>(dst_n));
    check_status(
        sorvoAudioResample(result.data(), extended.data(), to_rate, dst_n, from_rate, src_n + 2),
        "sorvoAudioResample", file);
    return result;
}

bool has_sound_ending(const std::string& path) {
    static const char* const endings[] = {".wav", ".flac", ".ogg", ".oga", ".opus", ".mp3",
                                          ".aif", ".aiff", ".au",  ".w64", ".rf64", ".caf"};
    const std::string ending = ending_of(path);
    return std::any_of(std::begin(endings), std::end(endings),
                       [&](const char* known) { return ending == known; });
}

}  // namespace sorvo_tool
