#include "support/sound_reader.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <limits>
#include <mutex>
#include <utility>

#include "support/array.h"
#include "support/byte_source.h"
#include "support/sndfile.h"
#include "support/temporary_file.h"
#include "support/text.h"
#include "support/wav_header.h"

namespace sorvo_tool {
namespace {

constexpr std::size_t block_float_n = 1 << 16;  // read at a time, over all channels

Failure no_sound(const std::string& path, const std::string& reason) {
    return {Exit::input_failed, path, "cannot be read as sound: " + reason, "",
            "give a WAV, FLAC, Ogg, AIFF or MP3 file, or raw floats or .npy with --rate"};
}

Failure no_rate(const std::string& path) {
    return {Exit::usage, "--rate", "is missing, and " + path + " does not hold its sample rate", "",
            "give --rate HZ"};
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

std::string type_name(int format) {
    return format_name(SFC_GET_FORMAT_INFO, format & SF_FORMAT_TYPEMASK) + ", " +
           format_name(SFC_GET_FORMAT_INFO, format & SF_FORMAT_SUBMASK);
}

// True where the log of opening says that the header promises more samples than the file has:
// "data : 40000 (should be 19978)". Lengths that programs write into pipes, for want of a better
// one, promise nothing.
bool is_cut_short(SNDFILE* file) {
    std::array<char, 16384> log{};
    sf_command(file, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    const std::string text(log.data());
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        const std::string line = text.substr(begin, end - begin);
        std::array<char, 16> name{};
        unsigned long long promised_n = 0;
        unsigned long long found_n = 0;
        if (std::sscanf(line.c_str(), " %15[A-Za-z ]: %llu (should be %llu", name.data(),
                        &promised_n, &found_n) != 3)
            continue;
        // Not those of the whole file, RIFF and FORM, which often are a little off.
        for (const char* const known : {"data ", "SSND ", "Data Size ", "riff ", "Riff size "})
            if (std::strncmp(name.data(), known, std::strlen(known)) == 0 && promised_n > found_n &&
                promised_n < 0x7ffff000)
                return true;
    }
    return false;
}

// A file that libsndfile knows.
class SndfileSource : public SampleSource {
  public:
    SndfileSource(const std::string& path, std::unique_ptr<TemporaryFile> copy)
        : copy_(std::move(copy)) {
        SF_INFO info{};
        std::string reason;
        file_ = copy_ ? open_sound(copy_->descriptor(), SFM_READ, info, reason)
                      : open_sound(path, SFM_READ, info, reason);
        if (!file_) throw no_sound(path, reason);
        format.sample_rate = info.samplerate;
        format.channel_n = static_cast<std::size_t>(info.channels);
        format.sample_format = sample_format_of(info.format);
        format.type = type_name(info.format);
        if (info.frames < SF_COUNT_MAX / 2) format.sample_n = info.frames;
        // Of MP3 files without a table of contents the length is about right.
        format.is_guess = (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG;
        promised_n_ = format.sample_n.value_or(0);
        if (format.is_guess) promised_n_ -= promised_n_ / 100;
        is_cut_short_ = is_cut_short(file_.get());
    }

    std::size_t read(float* samples, std::size_t frame_n) override {
        const sf_count_t read_n =
            sf_readf_float(file_.get(), samples, static_cast<sf_count_t>(frame_n));
        sample_n_ += std::max<sf_count_t>(read_n, 0);
        return static_cast<std::size_t>(std::max<sf_count_t>(read_n, 0));
    }

    std::string complaint() const override {
        if (is_cut_short_) return "its header promises more";
        if (sample_n_ < promised_n_)
            return "its header promises " + std::to_string(*format.sample_n);
        if (sf_error(file_.get()) != SF_ERR_NO_ERROR) return sf_strerror(file_.get());
        return "";
    }

  private:
    std::unique_ptr<TemporaryFile> copy_;  // of a pipe
    SndfileHandle file_;
    bool is_cut_short_ = false;
    sf_count_t promised_n_ = 0;
    sf_count_t sample_n_ = 0;
};

// Samples of a stream behind its header, or without one. libsndfile decodes them.
class StreamSource : public SampleSource {
  public:
    StreamSource(const std::string& path, std::unique_ptr<ByteSource> bytes,
                 const WavHeader& header, const std::string& type)
        : bytes_(std::move(bytes)) {
        const auto frame_bytes_n = static_cast<std::uint64_t>(header.channel_n) *
                                   static_cast<std::uint64_t>(header.bytes_a_sample);
        begin_ = bytes_->position();
        frame_bytes_n_ = frame_bytes_n;
        end_n_ = header.data_n.value_or(std::numeric_limits<std::int64_t>::max() / 2);
        if (header.data_n)
            format.sample_n = static_cast<std::int64_t>(*header.data_n / frame_bytes_n);
        format.sample_rate = header.sample_rate;
        format.channel_n = static_cast<std::size_t>(header.channel_n);
        format.sample_format = sample_format_of(header.subtype);
        format.type = type;
        SF_VIRTUAL_IO access{};
        access.get_filelen = [](void* self) {
            return static_cast<sf_count_t>(static_cast<StreamSource*>(self)->end_n_);
        };
        access.tell = [](void* self) { return static_cast<StreamSource*>(self)->position(); };
        access.seek = [](sf_count_t, int, void* self) {
            return static_cast<StreamSource*>(self)->position();  // there is no way back
        };
        access.read = [](void* data, sf_count_t n, void* self) {
            return static_cast<StreamSource*>(self)->read_bytes(data, n);
        };
        SF_INFO info{};
        info.samplerate = header.sample_rate;
        info.channels = header.channel_n;
        info.format = SF_FORMAT_RAW | header.subtype | SF_ENDIAN_LITTLE;
        std::string reason;
        file_ = open_sound(access, this, SFM_READ, info, reason);
        if (!file_) throw no_sound(path, reason);
    }

    std::size_t read(float* samples, std::size_t frame_n) override {
        const sf_count_t read_n =
            sf_readf_float(file_.get(), samples, static_cast<sf_count_t>(frame_n));
        if (failure_) std::rethrow_exception(failure_);
        sample_n_ += std::max<sf_count_t>(read_n, 0);
        if (read_n <= 0) drain();
        return static_cast<std::size_t>(std::max<sf_count_t>(read_n, 0));
    }

    std::string complaint() const override {
        if (format.sample_n && sample_n_ < *format.sample_n)
            return "its header promises " + std::to_string(*format.sample_n);
        return rest_n_ > 0 ? "it ends within a sample" : "";
    }

  private:
    sf_count_t position() const { return static_cast<sf_count_t>(bytes_->position() - begin_); }

    sf_count_t read_bytes(void* data, sf_count_t n) {
        try {
            const auto left_n = static_cast<sf_count_t>(end_n_) - position();
            return static_cast<sf_count_t>(
                bytes_->read(data, static_cast<std::size_t>(std::min(n, left_n))));
        } catch (...) {  // which must not pass through a C library
            failure_ = std::current_exception();
            return 0;
        }
    }

    // What follows the samples is read as well, so that the writer of the pipe sees no error.
    void drain() {
        rest_n_ = static_cast<std::uint64_t>(position()) % frame_bytes_n_;
        std::array<char, 4096> rest{};
        while (bytes_->read(rest.data(), rest.size()) > 0) {
        }
    }

    std::unique_ptr<ByteSource> bytes_;
    std::uint64_t begin_ = 0;
    std::uint64_t end_n_ = 0;
    std::uint64_t frame_bytes_n_ = 1;
    std::uint64_t rest_n_ = 0;  // bytes behind the last whole sample
    std::exception_ptr failure_;
    SndfileHandle file_;
    sf_count_t sample_n_ = 0;
};

// [samples] or [channels][samples] in a .npy file.
class ArraySource : public SampleSource {
  public:
    ArraySource(const std::string& path, std::unique_ptr<TemporaryFile> copy)
        : array_(path, std::move(copy)) {
        const auto& shape = array_.shape();
        if (array_.is_complex() || shape.empty() || shape.size() > 2 || shape[0] == 0 ||
            (shape.size() == 2 && shape[0] > 1024))
            throw Failure(Exit::input_failed, path, "is no array of samples",
                          "real, [samples] or [channels][samples] with at most 1024 channels",
                          "save it in that form");
        format.channel_n = shape.size() == 2 ? shape[0] : 1;
        format.sample_format = SampleFormat::float32;
        format.type = "NumPy, real";
        format.sample_n = static_cast<std::int64_t>(shape.back());
    }

    std::size_t read(float* samples, std::size_t frame_n) override {
        const auto all_n = static_cast<std::size_t>(*format.sample_n);
        const std::size_t n = std::min(frame_n, all_n - at_);
        std::vector<float> part(n);
        for (std::size_t channel = 0; channel < format.channel_n; ++channel) {
            array_.read(part.data(), n, channel * all_n + at_);
            for (std::size_t i = 0; i < n; ++i) samples[i * format.channel_n + channel] = part[i];
        }
        at_ += n;
        return n;
    }

  private:
    NpyFile array_;
    std::size_t at_ = 0;
};

// A WAV longer than its header can say, whose length was left open: libsndfile would stop at 4 GiB.
bool is_long_wav(const std::string& path) {
    std::error_code error;
    if (std::filesystem::file_size(path, error) < 0xffffffff || error) return false;
    ByteSource bytes(path);
    const auto header = read_wav_header(bytes);
    return header && !header->data_n;
}

std::unique_ptr<SampleSource> open_source(const std::string& path, const ReadingOptions& options) {
    const bool is_piped = is_pipe(path);
    const std::string ending = std::filesystem::path(path).extension().string();
    const bool is_raw = ending == ".raw" || ending == ".f32";
    if (!is_piped) {
        if (!std::filesystem::exists(path)) throw no_sound(path, "there is no such file");
        if (std::filesystem::is_directory(path)) throw no_sound(path, "it is a folder");
        if (ending == ".npy") return std::make_unique<ArraySource>(path, nullptr);
        if (!is_raw && !is_long_wav(path)) return std::make_unique<SndfileSource>(path, nullptr);
    }
    auto bytes = std::make_unique<ByteSource>(path);
    if (!is_raw) {
        if (bytes->peek(6).compare(0, 6, "\x93NUMPY") == 0)
            return std::make_unique<ArraySource>(path, copy_of(*bytes));
        if (const auto header = read_wav_header(*bytes))
            return std::make_unique<StreamSource>(path, std::move(bytes), *header,
                                                  type_name(SF_FORMAT_WAV | header->subtype));
        if (options.rate == 0) return std::make_unique<SndfileSource>(path, copy_of(*bytes));
    }
    if (options.rate == 0) throw no_rate(path);
    WavHeader raw;
    raw.sample_rate = options.rate;
    raw.channel_n = options.channel_n;
    raw.subtype = SF_FORMAT_FLOAT;
    raw.bytes_a_sample = sizeof(float);
    return std::make_unique<StreamSource>(path, std::move(bytes), raw, "raw floats");
}

}  // namespace

SoundReader::SoundReader(std::string path, const ReadingOptions& options)
    : path_(std::move(path)), options_(options), source_(open_source(path_, options)) {
    header_rate_ = source_->format.sample_rate;
    if (options.rate > 0) source_->format.sample_rate = options.rate;
    if (options.allow_truncated) source_->format.is_guess = true;
    if (source_->format.sample_rate <= 0) throw no_rate(path_);
}

bool SoundReader::read(Block& block) {
    const std::size_t channel_n = source_->format.channel_n;
    const std::size_t most_n = std::max<std::size_t>(1, block_float_n / channel_n);
    interleaved_.resize(most_n * channel_n);
    const std::size_t n = source_->read(interleaved_.data(), most_n);
    if (n == 0) {
        check_end();
        return false;
    }
    sample_n_ += static_cast<std::int64_t>(n);
    block.resize(channel_n);
    for (std::size_t channel = 0; channel < channel_n; ++channel) {
        block[channel].resize(n);
        for (std::size_t i = 0; i < n; ++i) {
            const float sample = interleaved_[i * channel_n + channel];
            block[channel][i] = sample;
            not_finite_n_ += !std::isfinite(sample);
            is_silent_ = is_silent_ && sample == 0;
        }
    }
    return true;
}

void SoundReader::check_end() const {
    const std::string complaint = source_->complaint();
    if (!complaint.empty() && !options_.allow_truncated)
        throw Failure(Exit::input_failed, path_,
                      "is cut short or damaged after " +
                          counted(static_cast<std::size_t>(sample_n_), "sample") + ": " + complaint,
                      "",
                      "mend or replace the file, or give --allow-truncated to take what it has");
    if (sample_n_ == 0)
        throw Failure(Exit::input_failed, path_, "holds no samples", "", "give a file with sound");
}

void SoundReader::describe(Report& report) const {
    const SoundFormat& format = source_->format;
    report.seconds = static_cast<double>(sample_n_) / format.sample_rate;
    report.facts.add("sample_rate", number(format.sample_rate));
    report.facts.add("channels", number(format.channel_n));
    report.facts.add("samples", number(sample_n_));
    report.facts.add("seconds", report.seconds);
    if (!source_->complaint().empty())
        report.notes.push_back("cut short or damaged: " + source_->complaint());
    if (header_rate_ > 0 && header_rate_ != format.sample_rate)
        report.notes.push_back("taken as " + std::to_string(format.sample_rate) +
                               " Hz, against its header's " + std::to_string(header_rate_));
    if (is_silent_) report.notes.push_back("silent: every sample is 0");
    if (not_finite_n_ > 0) report.defects.push_back(counted(not_finite_n_, "sample") + " read");
}

std::vector<float> mix_down(const Block& channels) {
    if (channels.size() == 1) return channels.front();
    std::vector<float> mono(channels.front().size());
    for (std::size_t i = 0; i < mono.size(); ++i) {
        double sum = 0;
        for (const auto& channel : channels) sum += static_cast<double>(channel[i]);
        mono[i] = static_cast<float>(sum / static_cast<double>(channels.size()));
    }
    return mono;
}

bool has_sound_ending(const std::string& path) {
    static const char* const endings[] = {".wav", ".flac", ".ogg", ".oga", ".opus", ".mp3",
                                          ".aif", ".aiff", ".au",  ".w64", ".rf64", ".caf"};
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return std::any_of(std::begin(endings), std::end(endings),
                       [&](const char* known) { return ending == known; });
}

}  // namespace sorvo_tool
