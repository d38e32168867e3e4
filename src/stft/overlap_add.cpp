#include "stft/overlap_add.h"

#include <algorithm>
#include <cstring>

#include "fft/fft_table.h"
#include "stft/block_layout.h"
#include "stft/frame_kernels.h"

namespace sorvo::audio {

bool lanes_pay(const SynthesisSource& source) {
    constexpr int shortest = 9;  // freq_n of 16
    constexpr int longest = max_planned_n / 2 + 1;
    return source.frame_n > 1 && source.hop_n > 0 && source.freq_n > 2 &&
           source.freq_n <= longest &&
           (!is_pow2(2 * source.freq_n - 2) || source.freq_n >= shortest);
}

OverlapAdd::OverlapAdd(float* dst, const SynthesisSource& source, const FftPlan& plan,
                       const std::vector<float>& window, float factor,
                       const OverlapKernels& kernels)
    : dst_(dst),
      source_(source),
      squares_window_(window),
      span_(static_cast<std::ptrdiff_t>(plan.view().n), static_cast<std::ptrdiff_t>(window.size())),
      kernels_(kernels),
      fft_n_(plan.view().n),
      block_n_(block_frames(static_cast<int>(fft_n_))),
      rows_(std::min(static_cast<std::size_t>(source.hop_n), fft_n_)),
      reach_((fft_n_ - 1) / rows_),
      length_(static_cast<std::uint64_t>(source.frame_n - 1) *
                  static_cast<std::uint64_t>(source.hop_n) +
              fft_n_),
      offset_(source.center != 0 ? fft_n_ / 2 : 0),
      window_(fft_n_, 1.0F),
      steady_(rows_),
      edge_(rows_),
      workspace_({2 * (fft_n_ / 2 + 1) * odd_lines(block_n_), rows_ * sums_row(),
                  rows_ * sums_row(), kernels.lane_n * (2 * fft_n_ + work_scratch_n(plan.view())),
                  kernels.lane_n * fft_n_}),
      spectra_(workspace_.take(2 * (fft_n_ / 2 + 1) * odd_lines(block_n_))),
      sums_(workspace_.take(rows_ * sums_row())),
      linear_(workspace_.take(rows_ * sums_row())),
      job_{} {
    apply_window(window_, window);
    sum_squares(steady_.data(), reach_, 0);
    std::fill_n(sums_, rows_ * sums_row(), 0.0F);
    job_.plan = plan.view();
    job_.row = odd_lines(block_n_);
    job_.window = window_.data();
    job_.factor = factor;
    job_.work = workspace_.take(kernels.lane_n * (2 * fft_n_ + work_scratch_n(plan.view())));
    job_.frames = workspace_.take(kernels.lane_n * fft_n_);
}

/// Columns of a block, rounded up so that a block of columns can be moved in whole packs.
std::size_t OverlapAdd::sums_row() const {
    return odd_lines(block_n_ + reach_);
}

void OverlapAdd::run(const PlainFrame& plain_frame) {
    // Later frames begin behind what is wanted.
    const std::uint64_t heard = (offset_ + static_cast<std::uint64_t>(source_.max_sample_n)) /
                                    static_cast<std::uint64_t>(source_.hop_n) +
                                1;
    const auto frame_n =
        static_cast<std::size_t>(std::min(heard, static_cast<std::uint64_t>(source_.frame_n)));
    for (std::size_t t = 0; t < frame_n; t += block_n_) {
        const std::size_t n = std::min(block_n_, frame_n - t);
        const bool finite = load(t, n);
        for (std::size_t tile = 0; tile < n; tile += kernels_.lane_n) {
            if (finite) {
                job_.spectra = spectra_ + tile;
                kernels_.synthesize(job_);
            } else {
                copy_plain_frames(plain_frame, t + tile, std::min(kernels_.lane_n, n - tile));
            }
            kernels_.overlap_add(sums_ + tile, sums_row(), job_.frames, fft_n_, rows_);
        }
        const bool last = t + n == frame_n;
        write_columns(t, last ? n + reach_ : n);
        drop_columns(n);
    }
    const std::uint64_t wanted =
        std::min(length_, static_cast<std::uint64_t>(source_.max_sample_n));
    for (std::uint64_t i = length_ - offset_; i < wanted; ++i) {
        dst_[i] = 0.0F;
    }
}

/// Spectra of frames t ... t + frame_n - 1; those that fill the last pack are zeros, which add
/// nothing.
bool OverlapAdd::load(std::size_t t, std::size_t frame_n) {
    const auto row = 2 * static_cast<std::size_t>(source_.frame_n);
    const std::uint32_t largest =
        kernels_.separate({spectra_, job_.row, source_.src + 2 * t, row,
                           static_cast<std::size_t>(source_.freq_n), frame_n});
    float magnitude = 0.0F;
    std::memcpy(&magnitude, &largest, sizeof magnitude);
    return magnitude < 1e37F / static_cast<float>(fft_n_);
}

void OverlapAdd::copy_plain_frames(const PlainFrame& plain_frame, std::size_t t,
                                   std::size_t frame_n) {
    std::fill_n(job_.frames, fft_n_ * kernels_.lane_n, 0.0F);
    for (std::size_t lane = 0; lane < frame_n; ++lane) {
        const std::vector<float>& frame = plain_frame(t + lane);
        for (std::size_t i = 0; i < fft_n_; ++i) {
            job_.frames[i * kernels_.lane_n + lane] = frame[2 * i];
        }
    }
}

/// Columns first ... first + column_n - 1 of the signal, which are the first columns of the sums.
void OverlapAdd::write_columns(std::size_t first, std::size_t column_n) {
    const std::size_t padded = (column_n + kernels_.lane_n - 1) / kernels_.lane_n * kernels_.lane_n;
    kernels_.transpose_back(linear_, rows_, sums_, sums_row(), rows_, padded);
    const auto frame_n = static_cast<std::size_t>(source_.frame_n);
    for (std::size_t i = 0; i < column_n; ++i) {
        const std::size_t c = first + i;
        const float* divisors = steady_.data();
        if (c < reach_ || c >= frame_n) {
            sum_squares(edge_.data(), std::min(c, reach_), c < frame_n ? 0 : c - frame_n + 1);
            divisors = edge_.data();
        }
        write_column(linear_ + i * rows_, divisors,
                     static_cast<std::uint64_t>(c) * static_cast<std::uint64_t>(source_.hop_n));
    }
}

/// The part of a column that is wanted, and zeros up to the next.
void OverlapAdd::write_column(const float* column, const float* divisors, std::uint64_t begin) {
    const std::uint64_t end =
        std::min(length_, offset_ + static_cast<std::uint64_t>(source_.max_sample_n));
    const std::uint64_t from = std::clamp(offset_, begin, begin + rows_);
    const std::uint64_t to = std::clamp(end, from, begin + rows_);
    if (from < to) {
        kernels_.divide(dst_ + (from - offset_), column + (from - begin), divisors + (from - begin),
                        static_cast<std::size_t>(to - from));
    }
    const std::uint64_t gap_end = std::min(end, begin + static_cast<std::uint64_t>(source_.hop_n));
    for (std::uint64_t p = std::max(offset_, begin + rows_); p < gap_end; ++p) {
        dst_[p - offset_] = 0.0F;
    }
}

/// The squared windows that overlap in a column, of the frames that began `last` ... `first`
/// columns before it, in the order of the frames; 1 where the sum is so small that it does not
/// divide.
void OverlapAdd::sum_squares(float* divisors, std::size_t last, std::size_t first) const {
    for (std::size_t r = 0; r < rows_; ++r) {
        float sum = 0.0F;
        for (std::size_t shift = last + 1; shift-- > first;) {
            const auto i = static_cast<std::ptrdiff_t>(r + shift * rows_);
            if (i >= span_.begin && i < span_.end) {
                const float w = squares_window_[static_cast<std::size_t>(i - span_.offset)];
                sum += w * w;
            }
        }
        divisors[r] = static_cast<double>(sum) > 1e-10 ? sum : 1.0F;
    }
}

/// Forgets the first columns and makes room for as many more.
void OverlapAdd::drop_columns(std::size_t column_n) {
    for (std::size_t r = 0; r < rows_; ++r) {
        float* const row = sums_ + r * sums_row();
        std::copy(row + column_n, row + sums_row(), row);
        std::fill(row + sums_row() - column_n, row + sums_row(), 0.0F);
    }
}

}  // namespace sorvo::audio
