#include "resample_peers.h"

#include <samplerate.h>
#include <soxr.h>
#include <speex/speex_resampler.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace sorvo::bench {
namespace {

/// In blocks that stay in the cache. soxr_clear() would design the filters again, so the converter
/// goes on from run to run, as in a stream; with `oneshot` each run is a converter of its own.
class Soxr : public Resampling {
  public:
    Soxr(int dst_rate, int src_rate, bool oneshot)
        : dst_rate_(dst_rate), src_rate_(src_rate), oneshot_(oneshot), stream_(create()) {}
    ~Soxr() override { soxr_delete(stream_); }
    Soxr(const Soxr&) = delete;
    Soxr& operator=(const Soxr&) = delete;

    const char* name() const override { return oneshot_ ? "soxr:hq-oneshot" : "soxr:hq-stream"; }
    void run(float* dst, int dst_n, const float* src, int src_n) override {
        constexpr std::size_t block_n = 8192;
        const auto source_n = static_cast<std::size_t>(src_n);
        const auto room_n = static_cast<std::size_t>(dst_n);
        const soxr_t converter = oneshot_ ? create() : stream_;
        std::size_t written = 0;
        std::size_t done = 0;
        for (std::size_t read = 0; read < source_n; read += block_n) {
            soxr_process(converter, src + read, std::min(block_n, source_n - read), nullptr,
                         dst + written, room_n - written, &done);
            written += done;
        }
        if (oneshot_) {
            soxr_process(converter, nullptr, 0, nullptr, dst + written, room_n - written, &done);
            written += done;
            soxr_delete(converter);
        }
        std::fill(dst + written, dst + dst_n, 0.0F);
    }

  private:
    soxr_t create() const {
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
        return soxr_create(src_rate_, dst_rate_, 1, nullptr, nullptr, &quality, nullptr);
    }

    int dst_rate_;
    int src_rate_;
    bool oneshot_;
    soxr_t stream_;
};

class SampleRate : public Resampling {
  public:
    SampleRate(int dst_rate, int src_rate)
        : ratio_(static_cast<double>(dst_rate) / src_rate),
          converter_(src_new(SRC_SINC_MEDIUM_QUALITY, 1, nullptr)) {}
    ~SampleRate() override { src_delete(converter_); }
    SampleRate(const SampleRate&) = delete;
    SampleRate& operator=(const SampleRate&) = delete;

    const char* name() const override { return "libsamplerate:sinc-medium"; }
    void run(float* dst, int dst_n, const float* src, int src_n) override {
        src_reset(converter_);
        SRC_DATA data{src, dst, src_n, dst_n, 0, 0, 1, ratio_};
        src_process(converter_, &data);
        std::fill(dst + data.output_frames_gen, dst + dst_n, 0.0F);
    }

  private:
    double ratio_;
    SRC_STATE* converter_;
};

class Speex : public Resampling {
  public:
    Speex(int dst_rate, int src_rate, int quality)
        : name_("speexdsp:q" + std::to_string(quality)),
          converter_(speex_resampler_init(1, static_cast<spx_uint32_t>(src_rate),
                                          static_cast<spx_uint32_t>(dst_rate), quality, nullptr)) {}
    ~Speex() override { speex_resampler_destroy(converter_); }
    Speex(const Speex&) = delete;
    Speex& operator=(const Speex&) = delete;

    const char* name() const override { return name_.c_str(); }
    void run(float* dst, int dst_n, const float* src, int src_n) override {
        speex_resampler_reset_mem(converter_);
        speex_resampler_skip_zeros(converter_);
        spx_uint32_t written = 0;
        spx_uint32_t read = 0;
        while (read < static_cast<spx_uint32_t>(src_n)) {
            spx_uint32_t in_n = static_cast<spx_uint32_t>(src_n) - read;
            spx_uint32_t out_n = static_cast<spx_uint32_t>(dst_n) - written;
            if (out_n == 0) break;
            speex_resampler_process_float(converter_, 0, src + read, &in_n, dst + written, &out_n);
            read += in_n;
            written += out_n;
        }
        std::fill(dst + written, dst + dst_n, 0.0F);
    }

  private:
    std::string name_;
    SpeexResamplerState* converter_;
};

}  // namespace

std::vector<std::shared_ptr<Resampling>> resample_peers(int dst_rate, int src_rate) {
    return {std::make_shared<Soxr>(dst_rate, src_rate, true),
            std::make_shared<Soxr>(dst_rate, src_rate, false),
            std::make_shared<SampleRate>(dst_rate, src_rate),
            std::make_shared<Speex>(dst_rate, src_rate, 5),
            std::make_shared<Speex>(dst_rate, src_rate, 7)};
}

}  // namespace sorvo::bench
