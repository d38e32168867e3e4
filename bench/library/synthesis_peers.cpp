#include "synthesis_peers.h"

#include <kiss_fftr.h>

#include <algorithm>
#include <cstddef>

#include "fastest.h"
#include "fftw_buffer.h"
#include "frame_blocks.h"

namespace sorvo::bench {
namespace {

/// Blocks of spectra around a batched inverse transform. Each block is added into a buffer of its
/// own length plus one frame, whose finished samples are divided by the overlap-added squared
/// window (made beforehand, as a reciprocal) and stored once.
class BlockSynthesis : public Synthesis {
  public:
    BlockSynthesis(const SynthesisTask& task, const BlockShape& shape)
        : task_(task),
          shape_(shape),
          in_(2 * shape.lane_n * real_distance(task.fft_n)),
          out_(2 * shape.lane_n * real_distance(task.fft_n)),
          window_(hann_window(task.fft_n)),
          interleaved_(static_cast<std::size_t>(2 * shape.lane_n * task.fft_n)),
          sum_(static_cast<std::size_t>(block_n() * task.hop_n + task.fft_n)) {
        std::vector<float> squares(static_cast<std::size_t>((task.frame_n - 1) * task.hop_n) +
                                   window_.size());
        for (int t = 0; t < task.frame_n; ++t) {
            for (std::size_t i = 0; i < window_.size(); ++i) {
                squares[static_cast<std::size_t>(t * task.hop_n) + i] += window_[i] * window_[i];
            }
        }
        for (const float s : squares) scale_.push_back(s > 1e-10F ? 1.0F / s : 1.0F);
        for (float& w : window_) w /= static_cast<float>(task.fft_n);
    }

    void run(float* dst, const float* src) override {
        const auto n = static_cast<std::size_t>(task_.fft_n);
        const auto advance = static_cast<std::size_t>(block_n() * task_.hop_n);
        std::fill(sum_.begin(), sum_.end(), 0.0F);
        for (int t0 = 0; t0 < task_.frame_n; t0 += block_n()) {
            const int frame_n = std::min(block_n(), task_.frame_n - t0);
            load_block(src, t0);
            transform();
            for (int l = 0; l < std::min(frame_n, shape_.lane_n); ++l) overlap_add(l, frame_n);
            const bool last = t0 + block_n() >= task_.frame_n;
            store(dst, t0 * task_.hop_n, last ? sum_.size() : advance);
            std::copy(sum_.end() - static_cast<std::ptrdiff_t>(n), sum_.end(), sum_.begin());
            std::fill(sum_.begin() + static_cast<std::ptrdiff_t>(n), sum_.end(), 0.0F);
        }
    }

  protected:
    virtual void transform() = 0;

    SynthesisTask task_;
    BlockShape shape_;
    FftwBuffer in_;
    FftwBuffer out_;

  private:
    void load_block(const float* src, int t0) {
        switch (shape_.lane_n) {
            case 8:
                return load<8>(src, t0);
            case 16:
                return load<16>(src, t0);
            default:
                return load<32>(src, t0);
        }
    }

    int block_n() const { return shape_.pairs ? 2 * shape_.lane_n : shape_.lane_n; }

    /// Spectra side by side, then one after the other where the transform takes them so. A last,
    /// shorter block repeats the last frame.
    template <int lane_n>
    void load(const float* src, int t0) {
        const int n = task_.fft_n;
        const int t_end = task_.frame_n;
        const bool whole = t0 + block_n() <= t_end;
        std::vector<float>& tail = tail_;
        tail.resize(static_cast<std::size_t>(2 * block_n()));
        float* const block = shape_.input == Layout::interleaved ? in_.data() : interleaved_.data();
        for (int k = 0; k <= n / 2; ++k) {
            const float* row = src + 2 * (std::ptrdiff_t{t_end} * k + t0);
            if (!whole) {
                for (int f = 0; f < block_n(); ++f) {
                    const int t = std::min(f, t_end - 1 - t0);
                    tail[static_cast<std::size_t>(2 * f)] = row[2 * t];
                    tail[static_cast<std::size_t>(2 * f + 1)] = row[2 * t + 1];
                }
                row = tail.data();
            }
            float* const z = block + std::ptrdiff_t{2} * lane_n * k;
            if (!shape_.pairs) {
                std::copy_n(row, 2 * lane_n, z);
                continue;
            }
            const float* __restrict const a = row;
            const float* __restrict const b = row + 2 * lane_n;
            float* const m = block + std::ptrdiff_t{2} * lane_n * ((n - k) % n);
            float mirrored[2 * lane_n];
            float direct[2 * lane_n];
            for (int l = 0; l < lane_n; ++l) {
                mirrored[2 * l] = a[2 * l] + b[2 * l + 1];
                mirrored[2 * l + 1] = b[2 * l] - a[2 * l + 1];
                direct[2 * l] = a[2 * l] - b[2 * l + 1];
                direct[2 * l + 1] = a[2 * l + 1] + b[2 * l];
            }
            std::copy_n(mirrored, 2 * lane_n, m);
            std::copy_n(direct, 2 * lane_n, z);
        }
        if (shape_.input == Layout::consecutive) {
            const int bin_n = shape_.pairs ? n : n / 2 + 1;
            const int distance = shape_.pairs ? n : half_spectrum_distance(n);
            transpose(in_.data(), distance, block, lane_n, bin_n, lane_n);
        }
    }

    /// Adds the frames of transform l; frames from frame_n on are not wanted.
    void overlap_add(int l, int frame_n) {
        const int n = task_.fft_n;
        const float* __restrict const w = window_.data();
        float* __restrict const to = sum_.data() + std::ptrdiff_t{task_.hop_n} * l;
        if (!shape_.pairs) {
            const float* __restrict const x = out_.data() + std::ptrdiff_t{real_distance(n)} * l;
            for (int i = 0; i < n; ++i) to[i] += w[i] * x[i];
            return;
        }
        const float* __restrict const x = out_.data() + std::ptrdiff_t{2} * n * l;
        float* __restrict const to_other = to + std::ptrdiff_t{task_.hop_n} * shape_.lane_n;
        if (l + shape_.lane_n < frame_n) {
            for (int i = 0; i < n; ++i) {  // blocks are longer than frames: no overlap of the two
                to[i] += w[i] * x[2 * i];
                to_other[i] += w[i] * x[2 * i + 1];
            }
        } else {
            for (int i = 0; i < n; ++i) to[i] += w[i] * x[2 * i];
        }
    }

    /// The first `count` sums, which are accumulated samples from `first` on.
    void store(float* dst, int first, std::size_t count) {
        const int dropped = task_.fft_n / 2;
        const int begin = std::max(first, dropped);
        const int end = std::min(first + static_cast<int>(count), dropped + task_.sample_n);
        const float* __restrict const sum = sum_.data() - first;
        const float* __restrict const scale = scale_.data();
        float* __restrict const to = dst - dropped;
        for (int i = begin; i < end; ++i) to[i] = sum[i] * scale[i];
    }

    std::vector<float> window_;
    std::vector<float> scale_;
    std::vector<float> interleaved_;
    std::vector<float> sum_;
    std::vector<float> tail_;
};

class FftwSynthesis : public BlockSynthesis {
  public:
    FftwSynthesis(const SynthesisTask& task, const BlockShape& shape)
        : BlockSynthesis(task, shape) {
        const int n = task.fft_n;
        const int lane_n = shape.lane_n;
        const bool apart = shape.input == Layout::consecutive;
        const unsigned flags = FFTW_MEASURE | FFTW_DESTROY_INPUT;
        if (shape.pairs) {
            plan_.reset(fftwf_plan_many_dft(1, &n, lane_n, in_.complex(), nullptr,
                                            apart ? 1 : lane_n, apart ? n : 1, out_.complex(),
                                            nullptr, 1, n, FFTW_BACKWARD, flags));
        } else {
            plan_.reset(fftwf_plan_many_dft_c2r(1, &n, lane_n, in_.complex(), nullptr,
                                                apart ? 1 : lane_n,
                                                apart ? half_spectrum_distance(n) : 1, out_.data(),
                                                nullptr, 1, real_distance(n), flags));
        }
    }
    const char* name() const override { return shape_.pairs ? "fftw:pairs" : "fftw:c2r-many"; }

  private:
    void transform() override { fftwf_execute(plan_.get()); }

    FftwPlan plan_;
};

class KissSynthesis : public BlockSynthesis {
  public:
    explicit KissSynthesis(const SynthesisTask& task)
        : BlockSynthesis(task, {false, 16, Layout::consecutive, Layout::consecutive}),
          config_(kiss_fftr_alloc(task.fft_n, 1, nullptr, nullptr)) {}
    ~KissSynthesis() override { kiss_fftr_free(config_); }
    KissSynthesis(const KissSynthesis&) = delete;
    KissSynthesis& operator=(const KissSynthesis&) = delete;

    const char* name() const override { return "kissfft"; }

  private:
    void transform() override {
        const int n = task_.fft_n;
        for (std::ptrdiff_t l = 0; l < shape_.lane_n; ++l) {
            kiss_fftri(
                config_,
                reinterpret_cast<const kiss_fft_cpx*>(in_.data()) + l * half_spectrum_distance(n),
                out_.data() + l * real_distance(n));
        }
    }

    kiss_fftr_cfg config_;
};

std::shared_ptr<Synthesis> fastest_fftw(const SynthesisTask& task, bool pairs) {
    std::vector<std::shared_ptr<Synthesis>> candidates;
    for (const int lane_n : {8, 16, 32}) {
        for (const Layout input : {Layout::consecutive, Layout::interleaved}) {
            const BlockShape shape{pairs, lane_n, input, Layout::consecutive};
            candidates.push_back(std::make_shared<FftwSynthesis>(task, shape));
        }
    }
    std::vector<float> dst(static_cast<std::size_t>(task.sample_n));
    const std::vector<float> src(
        static_cast<std::size_t>(task.fft_n + 2) * static_cast<std::size_t>(task.frame_n), 0.5F);
    return fastest(std::move(candidates), [&](const std::shared_ptr<Synthesis>& candidate) {
        candidate->run(dst.data(), src.data());
    });
}

}  // namespace

std::vector<std::shared_ptr<Synthesis>> synthesis_peers(const SynthesisTask& task) {
    return {fastest_fftw(task, true), fastest_fftw(task, false),
            std::make_shared<KissSynthesis>(task)};
}

}  // namespace sorvo::bench
