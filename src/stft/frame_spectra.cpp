#include "stft/frame_spectra.h"

#include <algorithm>
#include <cmath>

#include "fft/fft_table.h"
#include "stft/block_layout.h"
#include "stft/framing.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"
#include "util/edge_extension.h"
#include "util/overflow_guard.h"
#include "util/round_up.h"

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

bool batches_pay(const Analysis& analysis, int frame_n) {
    const int shortest = is_pow2(analysis.fft_n) ? 16 : 3;
    return frame_n > 1 && analysis.fft_n >= shortest && analysis.fft_n <= max_batch_n;
}

FrameForm form_of(float power) {
    if (!(power > 0.0F)) {
        return FrameForm::complex_values;
    }
    return power == 1.0F ? FrameForm::roots : FrameForm::squares;
}

FrameSpectra::FrameSpectra(const Signal& signal, const Analysis& analysis, int frame_n,
                           FrameForm form, SimdLevel level)
    : signal_(signal),
      analysis_(analysis),
      frame_n_(frame_n),
      plan_(analysis.fft_n, false),
      kernels_(frame_kernels(level)),
      form_(form),
      rows_(static_cast<std::size_t>(std::min(analysis.hop_n, analysis.fft_n))),
      overlap_((static_cast<std::size_t>(analysis.fft_n) - 1) / rows_),
      block_n_(std::min(block_frames(static_cast<std::size_t>(analysis.fft_n)),
                        whole_vectors(static_cast<std::size_t>(frame_n)))),
      limit_(0.0F),
      offsets_(static_cast<std::size_t>(analysis.fft_n)),
      window_(offsets_.size(), 1.0F),
      doubts_(form == FrameForm::roots ? offsets_.size() / 2 + 1 + doubts_at_once : 0),
      workspace_({transposed_n(), work_n(), out_n()}),
      transposed_(workspace_.take(transposed_n())),
      job_{} {
    const std::vector<float>& window =
        WindowTable::instance().ref_table(analysis.win_n, analysis.win_type);
    apply_window(window_, window);
    const WindowSpan span(analysis.fft_n, analysis.win_n);
    for (std::size_t i = 0, r = 0, c = 0; i < offsets_.size(); ++i) {
        offsets_[i] = static_cast<std::uint32_t>(r * transposed_step() + c);
        if (++r == rows_) {
            r = 0;
            ++c;
        }
    }
    job_.plan = plan_->view();
    job_.offsets = offsets_.data();
    job_.window = window_.data();
    job_.begin = static_cast<std::size_t>(span.begin);
    job_.end = static_cast<std::size_t>(span.cleared);
    job_.scale = scale_factor(window, analysis.fft_n, analysis.norm_type);
    job_.out_step = odd_lines(block_n_);
    job_.work = workspace_.take(work_n());
    job_.out = workspace_.take(out_n());
    job_.doubts = doubts_.data();
    limit_ = squares_limit(offsets_.size()) / std::max(job_.scale, 1.0F);
}

std::size_t FrameSpectra::whole_vectors(std::size_t frame_n) {
    return round_up(frame_n, least_columns);
}

std::size_t FrameSpectra::transposed_step() const {
    return odd_lines(block_n_ + overlap_);
}

std::size_t FrameSpectra::transposed_n() const {
    return rows_ * transposed_step();
}

std::size_t FrameSpectra::work_n() const {
    return kernels_.lane_n * (2 * plan_->view().n + plan_->view().scratch_n);
}

std::size_t FrameSpectra::out_n() const {
    const std::size_t freq_n = static_cast<std::size_t>(analysis_.fft_n) / 2 + 1;
    return (form_ == FrameForm::complex_values ? 2 : 1) * freq_n * odd_lines(block_n_);
}

void FrameSpectra::load(std::int64_t t, std::size_t n) {
    loaded_n_ = n;
    const std::int64_t pad = analysis_.center == 0 ? 0 : analysis_.fft_n / 2;
    const std::int64_t first = t * analysis_.hop_n - pad;
    const std::size_t column_n = whole_vectors(n) + overlap_;
    // Columns begin ... end - 1 lie inside the signal.
    const auto hop = static_cast<std::int64_t>(analysis_.hop_n);
    const auto columns_to = [&](std::int64_t distance) {
        const std::int64_t columns = distance > 0 ? (distance - 1) / hop + 1 : 0;
        return static_cast<std::size_t>(std::min(columns, static_cast<std::int64_t>(column_n)));
    };
    std::size_t begin = columns_to(-first);
    std::size_t end = columns_to(signal_.n - static_cast<std::int64_t>(rows_) - first + 1);
    // Fewer columns than that cannot be moved.
    begin = begin == 0 ? 0 : std::max(begin, least_columns);
    end = end == column_n ? end : std::min(end, column_n - least_columns);
    if (end < begin + least_columns || (end - begin < column_n && hop > analysis_.fft_n)) {
        begin = column_n;
        end = column_n;
    }
    std::uint32_t largest = 0;
    const auto move = [&](const float* from, std::int64_t step, std::size_t c, std::size_t c_end) {
        largest =
            std::max(largest, kernels_.transpose(transposed_ + c, transposed_step(), from,
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
        move(signal_.samples + first + static_cast<std::int64_t>(begin) * hop, hop, begin, end);
    }
    move_extended(end, column_n);
    finite_ = is_below(largest, limit_);
}

/// Samples of the columns c ... c_end - 1, of which some lie outside the signal; zeros behind the
/// loaded frames.
void FrameSpectra::extend(std::int64_t t, std::int64_t first, std::size_t c, std::size_t c_end) {
    const std::size_t size = rows_ * (c_end - c);
    if (rows_ == static_cast<std::size_t>(analysis_.hop_n)) {
        const std::size_t loaded =
            (loaded_n_ - 1) * rows_ + static_cast<std::size_t>(analysis_.fft_n);
        extended_.resize(std::min(size, loaded > c * rows_ ? loaded - c * rows_ : 0));
        extract_segment(extended_, signal_.samples, signal_.n,
                        first + static_cast<std::int64_t>(c * rows_),
                        analysis_.center == 1 ? Extension::reflect : Extension::zeros);
        extended_.resize(size);
        return;
    }
    // Frames with gaps in between: each by itself.
    extended_.assign(size, 0.0F);
    std::vector<float> frame(rows_);
    for (std::size_t i = 0; i < loaded_n_; ++i) {
        extract_frame(frame, signal_.samples, signal_.n, t + static_cast<std::int64_t>(i),
                      analysis_.hop_n, analysis_.center);
        std::copy(frame.begin(), frame.end(),
                  extended_.begin() + static_cast<std::ptrdiff_t>(i * rows_));
    }
}

FrameJob FrameSpectra::job_from(std::size_t first) const {
    FrameJob job = job_;
    job.samples = transposed_ + first;
    job.frame_n = round_up(loaded_n_ - first, kernels_.lane_n);
    return job;
}

float* FrameSpectra::rows(std::size_t first) {
    const FrameKernel* const kernels = finite_ ? kernels_.rows : kernels_.literal_rows;
    kernels[static_cast<int>(form_)](job_from(first));
    return job_.out;
}

void FrameSpectra::write(float* dst, std::size_t dst_step, std::size_t first, std::size_t count) {
    const BinMove move = {dst, dst_step, job_.out, row_n(), offsets_.size() / 2 + 1, count};
    if (form_ != FrameForm::complex_values) {
        kernels_.interleave_zeros(move);
    } else if (kernels_.interleave(move) && finite_ && is_pow2(analysis_.fft_n)) {
        kernels_.literal_rows[static_cast<int>(form_)](job_from(first));
        kernels_.interleave(move);
    }
}

std::size_t FrameSpectra::write_right_away(float* dst, std::size_t dst_step) {
    if (!finite_) {
        return 0;
    }
    FrameJob job = job_from(0);
    job.frame_n = loaded_n_ / kernels_.lane_n * kernels_.lane_n;
    job.out = dst;
    job.out_step = dst_step;
    kernels_.interleaved[static_cast<int>(form_)](job);
    return job.frame_n;
}

}  // namespace sorvo::audio
