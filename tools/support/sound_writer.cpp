#include "support/sound_writer.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "support/failure.h"
#include "support/output_file.h"
#include "support/sndfile.h"
#include "support/table.h"
#include "support/text.h"
#include "support/wav_header.h"

namespace sorvo_tool {
namespace {

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

int bits_of(SampleFormat format) {
    return format == SampleFormat::pcm16 ? 16 : format == SampleFormat::pcm24 ? 24 : 32;
}

int subtype_of(SampleFormat format) {
    return format == SampleFormat::pcm16   ? SF_FORMAT_PCM_16
           : format == SampleFormat::pcm24 ? SF_FORMAT_PCM_24
                                           : SF_FORMAT_FLOAT;
}

// Sound that libsndfile encodes: a whole file, or samples behind a header that has been written.
class SndfileSink : public SampleSink {
  public:
    SndfileSink(const std::string& path, bool is_flac, const SoundFormat& format)
        : SndfileSink(path, format) {
        pending_ = std::make_unique<PendingFile>(path);
        // A WAV holds up to 4 GiB; beyond, its form with long lengths does.
        const std::int64_t most_n = (std::int64_t{1} << 32) - (1 << 16);
        const std::int64_t frame_bytes_n = static_cast<std::int64_t>(format.channel_n) * bits_ / 8;
        const bool is_long = !format.sample_n || *format.sample_n > most_n / frame_bytes_n;
        open((is_flac   ? SF_FORMAT_FLAC
              : is_long ? SF_FORMAT_RF64
                        : SF_FORMAT_WAV),
             format, [&](SF_INFO& info, std::string& reason) {
                 return open_sound(pending_->temporary(), SFM_WRITE, info, reason);
             });
        // The chunk holds the time of day; without it equal sounds are equal files.
        sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
        if (is_long) sf_command(file_.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    }

    // The stream ends with `padding`.
    SndfileSink(const std::string& path, const std::string& header, std::string padding,
                const SoundFormat& format)
        : SndfileSink(path, format) {
        padding_ = std::move(padding);
        stream_ = std::make_unique<OutputFile>(path);
        stream_->write(header);
        SF_VIRTUAL_IO access{};
        access.get_filelen = [](void* self) { return static_cast<SndfileSink*>(self)->written_n_; };
        access.tell = access.get_filelen;
        access.seek = [](sf_count_t, int, void* self) {
            return static_cast<SndfileSink*>(self)->written_n_;  // there is no way back
        };
        access.write = [](const void* data, sf_count_t n, void* self) {
            return static_cast<SndfileSink*>(self)->write_bytes(data, n);
        };
        open(SF_FORMAT_RAW | SF_ENDIAN_LITTLE, format, [&](SF_INFO& info, std::string& reason) {
            return open_sound(access, this, SFM_WRITE, info, reason);
        });
    }

    void write(const Block& block) override {
        const std::size_t channel_n = block.size();
        const std::size_t n = block.front().size();
        const auto count = static_cast<sf_count_t>(n);
        sf_count_t written_n = 0;
        if (bits_ == 32) {
            floats_.resize(n * channel_n);
            for (std::size_t channel = 0; channel < channel_n; ++channel)
                for (std::size_t i = 0; i < n; ++i)
                    floats_[i * channel_n + channel] = block[channel][i];
            written_n = sf_writef_float(file_.get(), floats_.data(), count);
        } else {
            integers_.resize(n * channel_n);
            for (std::size_t channel = 0; channel < channel_n; ++channel)
                for (std::size_t i = 0; i < n; ++i) {
                    refuse_not_finite(block[channel][i]);
                    integers_[i * channel_n + channel] = quantise_(block[channel][i]);
                }
            written_n = sf_writef_int(file_.get(), integers_.data(), count);
        }
        if (failure_) std::rethrow_exception(failure_);
        if (written_n != count) throw cannot_write(path_, sf_strerror(file_.get()));
    }

    void commit() override {
        // Closing writes what is still held back; only then is a full disk certain to have shown.
        if (sf_close(file_.release()) != SF_ERR_NO_ERROR)
            throw cannot_write(path_, "the last block was refused");
        if (pending_) pending_->commit();
        if (stream_) {
            stream_->write(padding_);
            stream_->commit();
        }
    }

    std::size_t clipped_n() const override { return quantise_.clipped_n(); }

  private:
    SndfileSink(std::string path, const SoundFormat& format)
        : path_(std::move(path)), bits_(bits_of(format.sample_format)), quantise_(bits_) {}

    template <typename Open>
    void open(int type, const SoundFormat& format, const Open& open_with) {
        SF_INFO info{};
        info.samplerate = format.sample_rate;
        info.channels = static_cast<int>(format.channel_n);
        info.format = type | subtype_of(format.sample_format);
        std::string reason;
        file_ = open_with(info, reason);
        if (!file_) throw cannot_write(path_, reason);
    }

    sf_count_t write_bytes(const void* data, sf_count_t n) {
        try {
            stream_->write(data, static_cast<std::size_t>(n));
            written_n_ += n;
            return n;
        } catch (...) {  // which must not pass through a C library
            failure_ = std::current_exception();
            return 0;
        }
    }

    void refuse_not_finite(float sample) const {
        if (std::isfinite(sample)) return;
        throw Failure(Exit::input_failed, path_,
                      "would hold samples that are infinite or not a number", "",
                      "mend the cause, or write .npy, or --sample-format float, to see them");
    }

    std::string path_;
    int bits_;
    Quantiser quantise_;
    std::unique_ptr<PendingFile> pending_;
    std::unique_ptr<OutputFile> stream_;
    std::string padding_;
    sf_count_t written_n_ = 0;  // bytes of samples in the stream
    std::exception_ptr failure_;
    SndfileHandle file_;
    std::vector<float> floats_;
    std::vector<int> integers_;
};

// [channels][samples], which is written when all samples are there.
class ArraySink : public SampleSink {
  public:
    ArraySink(std::string path, std::string ending, std::size_t channel_n)
        : path_(std::move(path)),
          ending_(std::move(ending)),
          table_(channel_n, false, folder_for_temporaries(path_)) {}

    void write(const Block& block) override {
        joined_.clear();
        for (const auto& channel : block)
            joined_.insert(joined_.end(), channel.begin(), channel.end());
        table_.append(joined_.data(), block.front().size());
    }

    void commit() override {
        TableWriter writer(path_, ending_, table_, true);
        table_.for_each_piece([&](const std::vector<float>& cells) { writer.write(cells); });
        writer.commit();
    }

  private:
    std::string path_;
    std::string ending_;
    Table table_;
    std::vector<float> joined_;
};

std::unique_ptr<SampleSink> open_sink(const std::string& path, const std::string& ending,
                                      SoundFormat format) {
    if (ending == ".npy" || ending == ".csv")
        return std::make_unique<ArraySink>(path, ending, format.channel_n);
    if (ending == ".raw") {
        format.sample_format = SampleFormat::float32;
        return std::make_unique<SndfileSink>(path, "", "", format);
    }
    const bool is_flac = ending == ".flac";
    if (is_flac && format.sample_format == SampleFormat::float32)
        format.sample_format = SampleFormat::pcm24;
    if (is_flac || !is_stream(path)) return std::make_unique<SndfileSink>(path, is_flac, format);
    WavHeader header;
    header.sample_rate = format.sample_rate;
    header.channel_n = static_cast<int>(format.channel_n);
    header.subtype = subtype_of(format.sample_format);
    header.bytes_a_sample = bits_of(format.sample_format) / 8;
    if (format.sample_n && !format.is_guess)
        header.data_n = static_cast<std::uint64_t>(*format.sample_n) * format.channel_n *
                        static_cast<std::uint64_t>(header.bytes_a_sample);
    const std::string padding(header.data_n.value_or(0) % 2, '\0');  // to an even length
    return std::make_unique<SndfileSink>(path, wav_header_bytes(header), padding, format);
}

}  // namespace

SoundWriter::SoundWriter(const std::string& path, const std::string& ending,
                         const SoundFormat& format)
    : sink_(open_sink(path, ending, format)) {}

void SoundWriter::write(const Block& block) {
    if (block.front().empty()) return;
    sample_n_ += block.front().size();
    for (const auto& channel : block)
        not_finite_n_ += static_cast<std::size_t>(std::count_if(
            channel.begin(), channel.end(), [](float sample) { return !std::isfinite(sample); }));
    // In pieces, since the sinks make copies.
    constexpr std::size_t piece_n = 1 << 16;
    Block piece(block.size());
    for (std::size_t start = 0; start < block.front().size(); start += piece_n) {
        const std::size_t end = std::min(start + piece_n, block.front().size());
        for (std::size_t i = 0; i < block.size(); ++i)
            piece[i].assign(&block[i][start], &block[i][start] + (end - start));
        sink_->write(piece);
    }
}

void SoundWriter::commit() {
    sink_->commit();
}

void SoundWriter::describe(Report& report) const {
    report.facts.add("samples_written", number(sample_n_));
    if (sink_->clipped_n() > 0)
        report.notes.push_back(counted(sink_->clipped_n(), "sample") +
                               " beyond full scale clipped; --sample-format float keeps them");
    if (not_finite_n_ > 0) report.defects.push_back(counted(not_finite_n_, "sample") + " written");
}

}  // namespace sorvo_tool
