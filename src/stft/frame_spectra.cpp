#include "stft/frame_spectra.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "fft/fft_table.h"
#include "stft/block_layout.h"
#include "stft/framing.h"
#include "stft/stft_core.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

float scale_factor(const std::vector<float>& window, int fft_n, int norm_type) {
    std::vector<float> one(1, 1.0F);
    if (norm_type == 2) {
        scale_stft_scipy(one, fft_n);
    } else if (norm_type == 1) {
        scale_stft_torch(one, window);
    }
    return one[0];
}

/// What FrameKernels::transpose takes at any level, and a multiple of its packs.
constexpr std::size_t least_columns = 16;

}  // namespace

bool lanes_pay(const FrameSource& source) {
    const int shortest = is_pow2(source.fft_n) ? 16 : 3;
    return source.frame_n > 1 && source.fft_n >= shortest && source.fft_n <= max_planned_n;
}

FrameSpectra::FrameSpectra(const FrameSource& source, const FftPlan& plan,
                           const std::vector<float>& window, int norm_type, FrameForm form,
                           const FrameKernels& kernels)
    : source_(source),
      kernels_(kernels),
      form_(form),
      rows_(static_cast<std::size_t>(std::min(source.hop_n, source.fft_n))),
      overlap_((static_cast<std::size_t>(source.fft_n) - 1) / rows_),
      block_n_(std::min(block_frames(source.fft_n),
                        whole_packs(static_cast<std::size_t>(source.frame_n)))),
      limit_(0.0F),
      offsets_(static_cast<std::size_t>(source.fft_n)),
      window_(static_cast<std::size_t>(source.fft_n), 1.0F),
      doubts_(form == FrameForm::roots ? offsets_.size() / 2 + 1 + doubts_at_once : 0),
      workspace_({transposed_n(), work_n(plan.view()), out_n()}),
      transposed_(workspace_.take(transposed_n())),
      job_{} {
    apply_window(window_, window);
    const WindowSpan span(source.fft_n, static_cast<std::ptrdiff_t>(window.size()));
    for (std::size_t i = 0, r = 0, c = 0; i < offsets_.size(); ++i) {
        offsets_[i] = static_cast<std::uint32_t>(r * transposed_row() + c);
        if (++r == rows_) {
            r = 0;
            ++c;
        }
    }
    job_.plan = plan.view();
    job_.offsets = offsets_.data();
    job_.window = window_.data();
    job_.begin = static_cast<std::size_t>(span.begin);
    job_.end = static_cast<std::size_t>(span.cleared);
    job_.scale = scale_factor(window, source.fft_n, norm_type);
    job_.out_row = odd_lines(block_n_);
    job_.work = workspace_.take(work_n(job_.plan));
    job_.out = workspace_.take(out_n());
    job_.doubts = doubts_.data();
    // Below it neither the sums of a transform nor their squares reach the largest float.
    limit_ = 1e18F / (static_cast<float>(source.fft_n) * std::max(job_.scale, 1.0F));
}

std::size_t FrameSpectra::whole_packs(std::size_t frame_n) {
    return (frame_n + least_columns - 1) / least_columns * least_columns;
}

std::size_t FrameSpectra::transposed_row() const {
    return odd_lines(block_n_ + overlap_);
}

std::size_t FrameSpectra::transposed_n() const {
    return rows_ * transposed_row();
}

std::size_t FrameSpectra::work_n(const FftPlanView& plan) const {
    return kernels_.lane_n * (2 * plan.n + work_scratch_n(plan));
}

std::size_t FrameSpectra::out_n() const {
    const std::size_t freq_n = static_cast<std::size_t>(source_.fft_n) / 2 + 1;
    return (form_ == FrameForm::complex_values ? 2 : 1) * freq_n * odd_lines(block_n_);
}

bool FrameSpectra::load(std::int64_t t, std::size_t n) {
    loaded_n_ = n;
    const std::int64_t pad = source_.center == 0 ? 0 : source_.fft_n / 2;
    const std::int64_t first = t * source_.hop_n - pad;
    const std::size_t column_n = whole_packs(n) + overlap_;
    // Columns begin ... end - 1 lie inside the signal.
    const auto hop = static_cast<std::int64_t>(source_.hop_n);
    const auto columns_to = [&](std::int64_t distance) {
        const std::int64_t columns = distance > 0 ? (distance - 1) / hop + 1 : 0;
        return static_cast<std::size_t>(std::min(columns, static_cast<std::int64_t>(column_n)));
    };
    std::size_t begin = columns_to(-first);
    std::size_t end = columns_to(source_.sample_n - static_cast<std::int64_t>(rows_) - first + 1);
    // Fewer columns than that cannot be moved.
    begin = begin == 0 ? 0 : std::max(begin, least_columns);
    end = end == column_n ? end : std::min(end, column_n - least_columns);
    if (end < begin + least_columns || (end - begin < column_n && hop > source_.fft_n)) {
        begin = column_n;
        end = column_n;
    }
    std::uint32_t largest = 0;
    const auto move = [&](const float* from, std::int64_t step, std::size_t c, std::size_t c_end) {
        largest =
            std::max(largest, kernels_.transpose(transposed_ + c, transposed_row(), from,
                                                 static_cast<std::size_t>(step), rows_, c_end - c));
    };
    const auto move_extended = [&](std::size_t c, std::size_t c_end) {
        if (c < c_end) {
            extend(t, first, c, c_end);
            move(extended_.data(), static_cast<std::int64_t>(rows_), c, c_end);
        }
    };
    move_extended(0, begin);
    if (begin < end) {
        move(source_.src + first + static_cast<std::int64_t>(begin) * hop, hop, begin, end);
    }
    move_extended(end, column_n);
    float magnitude = 0.0F;
    std::memcpy(&magnitude, &largest, sizeof magnitude);
    return magnitude < limit_;
}

/// Samples of the columns c ... c_end - 1, of which some lie outside the signal; zeros behind the
/// loaded frames.
void FrameSpectra::extend(std::int64_t t, std::int64_t first, std::size_t c, std::size_t c_end) {
    const std::size_t size = rows_ * (c_end - c);
    if (rows_ == static_cast<std::size_t>(source_.hop_n)) {
        const std::size_t loaded =
            (loaded_n_ - 1) * rows_ + static_cast<std::size_t>(source_.fft_n);
        extended_.resize(std::min(size, loaded > c * rows_ ? loaded - c * rows_ : 0));
        extract_segment(extended_, source_.src, source_.sample_n,
                        first + static_cast<std::int64_t>(c * rows_),
                        source_.center == 1 ? Extension::reflect : Extension::zeros);
        extended_.resize(size);
        return;
    }
    // Frames with gaps in between: each by itself.
    extended_.assign(size, 0.0F);
    std::vector<float> frame(rows_);
    for (std::size_t i = 0; i < loaded_n_; ++i) {
        extract_frame(frame, source_.src, source_.sample_n, t + static_cast<std::int64_t>(i),
                      source_.hop_n, source_.center);
        std::copy(frame.begin(), frame.end(),
                  extended_.begin() + static_cast<std::ptrdiff_t>(i * rows_));
    }
}

FrameJob FrameSpectra::job_from(std::size_t first) const {
    FrameJob job = job_;
    job.samples = transposed_ + first;
    job.frame_n = (loaded_n_ - first + kernels_.lane_n - 1) / kernels_.lane_n * kernels_.lane_n;
    return job;
}

float* FrameSpectra::rows(std::size_t first) {
    kernels_.rows[static_cast<int>(form_)](job_from(first));
    return job_.out;
}

const float* FrameSpectra::exact_rows(std::size_t first) {
    kernels_.exact_rows(job_from(first));
    return job_.out;
}

std::size_t FrameSpectra::write(float* dst, std::size_t dst_row) {
    FrameJob job = job_from(0);
    job.frame_n = loaded_n_ / kernels_.lane_n * kernels_.lane_n;
    job.out = dst;
    job.out_row = dst_row;
    kernels_.interleaved[static_cast<int>(form_)](job);
    return job.frame_n;
}

}  // namespace sorvo::audio
