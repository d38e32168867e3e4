#include "analysis_peers.h"

#include <kiss_fftr.h>

#include <cstddef>

#include "fastest.h"
#include "fftw_buffer.h"

namespace sorvo::bench {
namespace {

class FftwAnalysis : public Analysis {
  public:
    FftwAnalysis(const AnalysisTask& task, const BlockShape& shape)
        : pairs_(shape.pairs),
          in_(2 * shape.lane_n * real_distance(task.fft_n)),
          out_(2 * shape.lane_n * real_distance(task.fft_n)),
          blocks_(task, shape, in_.data(), out_.data(), [this] { fftwf_execute(plan_.get()); }) {
        const int n = task.fft_n;
        const int lane_n = shape.lane_n;
        const auto stride = [&](Layout layout) {
            return layout == Layout::consecutive ? 1 : lane_n;
        };
        const auto distance = [&](Layout layout, int length) {
            return layout == Layout::consecutive ? length : 1;
        };
        const unsigned flags = FFTW_MEASURE | FFTW_DESTROY_INPUT;
        if (shape.pairs) {
            plan_.reset(fftwf_plan_many_dft(1, &n, lane_n, in_.complex(), nullptr,
                                            stride(shape.input), distance(shape.input, n),
                                            out_.complex(), nullptr, stride(shape.output),
                                            distance(shape.output, n), FFTW_FORWARD, flags));
        } else {
            plan_.reset(fftwf_plan_many_dft_r2c(
                1, &n, lane_n, in_.data(), nullptr, 1, real_distance(n), out_.complex(), nullptr,
                stride(shape.output), distance(shape.output, half_spectrum_distance(n)), flags));
        }
    }
    const char* name() const override { return pairs_ ? "fftw:pairs" : "fftw:r2c-many"; }
    void run(float* dst, const float* src) override { blocks_.run(dst, src); }

  private:
    bool pairs_;
    FftwBuffer in_;
    FftwBuffer out_;
    FftwPlan plan_;
    FrameBlocks blocks_;
};

class KissAnalysis : public Analysis {
  public:
    explicit KissAnalysis(const AnalysisTask& task)
        : fft_n_(task.fft_n),
          in_(lane_n * real_distance(fft_n_)),
          out_(2 * lane_n * half_spectrum_distance(fft_n_)),
          config_(kiss_fftr_alloc(fft_n_, 0, nullptr, nullptr)),
          blocks_(task, {false, lane_n, Layout::consecutive, Layout::consecutive}, in_.data(),
                  out_.data(), [this] { transform(); }) {}
    ~KissAnalysis() override { kiss_fftr_free(config_); }
    KissAnalysis(const KissAnalysis&) = delete;
    KissAnalysis& operator=(const KissAnalysis&) = delete;

    const char* name() const override { return "kissfft"; }
    void run(float* dst, const float* src) override { blocks_.run(dst, src); }

  private:
    static constexpr int lane_n = 16;

    void transform() {
        for (std::ptrdiff_t l = 0; l < lane_n; ++l) {
            kiss_fftr(
                config_, in_.data() + l * real_distance(fft_n_),
                reinterpret_cast<kiss_fft_cpx*>(out_.data()) + l * half_spectrum_distance(fft_n_));
        }
    }

    int fft_n_;
    FftwBuffer in_;
    FftwBuffer out_;
    kiss_fftr_cfg config_;
    FrameBlocks blocks_;
};

std::shared_ptr<Analysis> fastest_fftw(const AnalysisTask& task, bool pairs) {
    std::vector<std::shared_ptr<Analysis>> candidates;
    for (const int lane_n : {8, 16, 32}) {
        for (const Layout output : {Layout::consecutive, Layout::interleaved}) {
            const BlockShape shape{pairs, lane_n, Layout::consecutive, output};
            candidates.push_back(std::make_shared<FftwAnalysis>(task, shape));
        }
        if (pairs) {
            const BlockShape shape{pairs, lane_n, Layout::interleaved, Layout::interleaved};
            candidates.push_back(std::make_shared<FftwAnalysis>(task, shape));
        }
    }
    const auto frame_n = static_cast<std::size_t>(task.frame_n);
    const std::size_t row_n =
        task.bands.empty() ? static_cast<std::size_t>(task.fft_n) + 2 : task.bands.size();
    std::vector<float> dst(row_n * frame_n);
    const std::vector<float> src(static_cast<std::size_t>(task.sample_n), 0.5F);
    return fastest(std::move(candidates), [&](const std::shared_ptr<Analysis>& candidate) {
        candidate->run(dst.data(), src.data());
    });
}

}  // namespace

std::vector<std::shared_ptr<Analysis>> analysis_peers(const AnalysisTask& task) {
    return {fastest_fftw(task, true), fastest_fftw(task, false),
            std::make_shared<KissAnalysis>(task)};
}

}  // namespace sorvo::bench
