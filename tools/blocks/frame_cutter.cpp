#include "blocks/frame_cutter.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "support/failure.h"

namespace sorvo_tool {

FrameCutter::FrameCutter(const FrameSettings& frame, int most_frame_n, Take take)
    : frame_(frame), most_frame_n_(most_frame_n), take_(std::move(take)) {
    // As many samples as an int counts; and the count of frames is exact up to 2^24.
    const int most_of_an_int = (std::numeric_limits<int>::max() / 2 - frame.fft_n) / frame.hop_n;
    most_frame_n_ = std::max(1, std::min({most_frame_n, most_of_an_int, (1 << 22) / frame.hop_n}));
}

void FrameCutter::push(const std::vector<float>& samples) {
    samples_.insert(samples_.end(), samples.begin(), samples.end());
    sample_n_ += static_cast<std::int64_t>(samples.size());
    if (sample_n_ == 0) return;
    const std::int64_t last_begin = sample_n_ - frame_.fft_n - begin_of(0);
    const std::int64_t complete_n = last_begin < 0 ? 0 : last_begin / frame_.hop_n + 1;
    // The count is rounded to single precision; as it never falls, no frame is taken too early.
    take_frames(std::min(complete_n, count_frames(frame_, sample_n_)));
    // Behind the end, a reflection needs half a frame, and what a rounded count can exceed the
    // length by.
    const std::int64_t reflected_n = frame_.fft_n / 2 + 3 + (sample_n_ >> 21);
    forget_before(std::min(begin_of(frame_n_), sample_n_ - reflected_n));
}

void FrameCutter::flush() {
    if (sample_n_ > 0) take_frames(count_frames(frame_, sample_n_));
}

std::int64_t FrameCutter::begin_of(std::int64_t frame) const {
    const bool is_centred = frame_.center != SORVO_AUDIO_CENTER_NONE;
    return frame * frame_.hop_n - (is_centred ? frame_.fft_n / 2 : 0);
}

void FrameCutter::take_frames(std::int64_t end) {
    while (frame_n_ < end) {
        const std::int64_t frame_n = std::min<std::int64_t>(most_frame_n_, end - frame_n_);
        const std::int64_t begin = begin_of(frame_n_);
        const std::int64_t sample_n = (frame_n - 1) * frame_.hop_n + frame_.fft_n;
        const bool is_inside = begin >= first_ && begin + sample_n <= sample_n_;
        std::vector<float> extended;
        if (!is_inside) {
            extended.resize(static_cast<std::size_t>(sample_n));
            const std::int64_t period = std::max<std::int64_t>(2 * (sample_n_ - 1), 1);
            for (std::int64_t i = 0; i < sample_n; ++i) {
                std::int64_t position = begin + i;
                if (frame_.center == SORVO_AUDIO_CENTER_REFLECT) {
                    position = ((position % period) + period) % period;
                    position = std::min(position, period - position) % period;
                }
                if (position >= 0 && position < sample_n_)
                    extended[static_cast<std::size_t>(i)] =
                        samples_[static_cast<std::size_t>(position - first_)];
            }
        }
        take_(is_inside ? &samples_[static_cast<std::size_t>(begin - first_)] : extended.data(),
              static_cast<int>(sample_n), static_cast<int>(frame_n));
        frame_n_ += frame_n;
    }
}

void FrameCutter::forget_before(std::int64_t position) {
    const std::int64_t kept = std::clamp(position, first_, sample_n_);
    samples_.erase(samples_.begin(), samples_.begin() + (kept - first_));
    first_ = kept;
}

std::int64_t count_frames(const FrameSettings& frame, std::int64_t sample_n) {
    if (sample_n <= 0) return 0;
    if (sample_n > std::numeric_limits<int>::max()) {
        if (frame.center == SORVO_AUDIO_CENTER_NONE)
            return (sample_n - frame.fft_n) / frame.hop_n + 1;
        const bool has_rest =
            frame.center == SORVO_AUDIO_CENTER_ZEROS && sample_n % frame.hop_n != 0;
        return sample_n / frame.hop_n + 1 + has_rest;
    }
    int frame_n = 0;
    check_status(sorvoAudioGetFrameLen(&frame_n, static_cast<int>(sample_n), frame.fft_n,
                                       frame.hop_n, frame.center),
                 "sorvoAudioGetFrameLen", "");
    return frame_n < 0 ? 0 : frame_n;
}

std::vector<float> EndReflector::push(const std::vector<float>& samples) {
    if (pad_n_ == 0) return samples;
    std::vector<float> result;
    tail_.insert(tail_.end(), samples.begin(), samples.end());
    const std::size_t keep_n = pad_n_ + 1;
    if (tail_.size() < keep_n) return result;
    if (!has_begun_) {
        result.assign(tail_.rend() - static_cast<std::ptrdiff_t>(keep_n), tail_.rend() - 1);
        result.insert(result.end(), tail_.begin(), tail_.end());
        has_begun_ = true;
    } else {
        result = samples;
    }
    tail_.erase(tail_.begin(), tail_.end() - static_cast<std::ptrdiff_t>(keep_n));
    return result;
}

std::vector<float> EndReflector::flush() {
    if (pad_n_ == 0) return {};
    return {tail_.rbegin() + 1, tail_.rend()};
}

}  // namespace sorvo_tool
