#include "stft/overlap_add.h"

#include <algorithm>

#include "fft/fft_table.h"
#include "stft/block_layout.h"
#include "stft/window_table.h"
#include "util/overflow_guard.h"
#include "util/round_up.h"

namespace sorvo::audio {

bool batches_pay(const Synthesis& synthesis) {
    constexpr int shortest = 9;  // freq_n of 16
    constexpr int longest = max_batch_n / 2 + 1;
    return synthesis.frame_n > 1 && synthesis.hop_n > 0 && synthesis.freq_n > 2 &&
           synthesis.freq_n <= longest &&
           (!is_pow2(2 * synthesis.freq_n - 2) || synthesis.freq_n >= shortest);
}

OverlapAdd::OverlapAdd(float* dst, int max_sample_n, const Synthesis& synthesis, SimdLevel level)
    : dst_(dst),
      max_sample_n_(max_sample_n),
      synthesis_(synthesis),
      squares_window_(WindowTable::instance().ref_table(synthesis.win_n, synthesis.win_type)),
      span_(2 * synthesis.freq_n - 2, synthesis.win_n),
      plan_(2 * synthesis.freq_n - 2, true),
      kernels_(overlap_kernels(level)),
      fft_n_(2 * static_cast<std::size_t>(synthesis.freq_n) - 2),
      block_n_(block_frames(fft_n_)),
      rows_(std::min(static_cast<std::size_t>(synthesis.hop_n), fft_n_)),
      reach_((fft_n_ - 1) / rows_),
      length_(static_cast<std::uint64_t>(synthesis.frame_n - 1) *
                  static_cast<std::uint64_t>(synthesis.hop_n) +
              fft_n_),
      offset_(synthesis.center != 0 ? fft_n_ / 2 : 0),
      window_(fft_n_, 1.0F),
      steady_(rows_),
      edge_(rows_),
      job_{plan_->view(),
           nullptr,
           odd_lines(block_n_),
           window_.data(),
           static_cast<std::size_t>(span_.begin),
           static_cast<std::size_t>(span_.cleared),
           synthesis.norm_type == 2 ? 0.5F * static_cast<float>(fft_n_) : 1.0F,
           nullptr,
           nullptr},
      workspace_({spectra_n(), rows_ * sums_step(), rows_ * sums_step(), work_n(),
                  kernels_.lane_n * fft_n_}),
      spectra_(workspace_.take(spectra_n())),
      sums_(workspace_.take(rows_ * sums_step())),
      linear_(workspace_.take(rows_ * sums_step())) {
    apply_window(window_, squares_window_);
    sum_squares(steady_.data(), reach_, 0);
    std::fill_n(sums_, rows_ * sums_step(), 0.0F);
    job_.work = workspace_.take(work_n());
    job_.frames = workspace_.take(kernels_.lane_n * fft_n_);
}

std::size_t OverlapAdd::spectra_n() const {
    return 2 * (fft_n_ / 2 + 1) * job_.step;
}

std::size_t OverlapAdd::work_n() const {
    return kernels_.lane_n * (2 * fft_n_ + job_.plan.scratch_n);
}

/// Columns of a block, rounded up so that a block of columns can be moved in whole packs.
std::size_t OverlapAdd::sums_step() const {
    return odd_lines(block_n_ + reach_);
}

void OverlapAdd::run() {
    // Later frames begin behind what is wanted.
    const std::uint64_t heard = (offset_ + static_cast<std::uint64_t>(max_sample_n_)) /
                                    static_cast<std::uint64_t>(synthesis_.hop_n) +
                                1;
    const auto frame_n =
        static_cast<std::size_t>(std::min(heard, static_cast<std::uint64_t>(synthesis_.frame_n)));
    for (std::size_t t = 0; t < frame_n; t += block_n_) {
        const std::size_t n = std::min(block_n_, frame_n - t);
        const auto synthesize = load(t, n) ? kernels_.synthesize : kernels_.synthesize_literally;
        for (std::size_t tile = 0; tile < n; tile += kernels_.lane_n) {
            job_.spectra = spectra_ + tile;
            synthesize(job_);
            kernels_.overlap_add(sums_ + tile, sums_step(), job_.frames, fft_n_, rows_);
        }
        const bool last = t + n == frame_n;
        write_columns(t, last ? n + reach_ : n);
        drop_columns(n);
    }
    const std::uint64_t wanted = std::min(length_, static_cast<std::uint64_t>(max_sample_n_));
    for (std::uint64_t i = length_ - offset_; i < wanted; ++i) {
        dst_[i] = 0.0F;
    }
}

/// Spectra of frames t ... t + frame_n - 1; those that fill the last vector are zeros, which add
/// nothing. False if they are not finite or so large that a sum might overflow.
bool OverlapAdd::load(std::size_t t, std::size_t frame_n) {
    const std::uint32_t largest =
        kernels_.separate({spectra_, job_.step, synthesis_.src + 2 * t,
                           2 * static_cast<std::size_t>(synthesis_.frame_n),
                           static_cast<std::size_t>(synthesis_.freq_n), frame_n});
    return is_below(largest, transform_limit(fft_n_));
}

/// Columns first ... first + column_n - 1 of the signal, which are the first columns of the sums.
void OverlapAdd::write_columns(std::size_t first, std::size_t column_n) {
    const std::size_t padded = round_up(column_n, kernels_.lane_n);
    kernels_.transpose_back(linear_, rows_, sums_, sums_step(), rows_, padded);
    const auto frame_n = static_cast<std::size_t>(synthesis_.frame_n);
    for (std::size_t i = 0; i < column_n; ++i) {
        const std::size_t c = first + i;
        const float* divisors = steady_.data();
        if (c < reach_ || c >= frame_n) {
            sum_squares(edge_.data(), std::min(c, reach_), c < frame_n ? 0 : c - frame_n + 1);
            divisors = edge_.data();
        }
        write_column(linear_ + i * rows_, divisors,
                     static_cast<std::uint64_t>(c) * static_cast<std::uint64_t>(synthesis_.hop_n));
    }
}

/// The part of a column that is wanted, and zeros up to the next.
void OverlapAdd::write_column(const float* column, const float* divisors, std::uint64_t begin) {
    const std::uint64_t end =
        std::min(length_, offset_ + static_cast<std::uint64_t>(max_sample_n_));
    const std::uint64_t from = std::clamp(offset_, begin, begin + rows_);
    const std::uint64_t to = std::clamp(end, from, begin + rows_);
    if (from < to) {
        kernels_.divide(dst_ + (from - offset_), column + (from - begin), divisors + (from - begin),
                        static_cast<std::size_t>(to - from));
    }
    const std::uint64_t gap_end =
        std::min(end, begin + static_cast<std::uint64_t>(synthesis_.hop_n));
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
        float* const row = sums_ + r * sums_step();
        std::copy(row + column_n, row + sums_step(), row);
        std::fill(row + sums_step() - column_n, row + sums_step(), 0.0F);
    }
}

}  // namespace sorvo::audio
