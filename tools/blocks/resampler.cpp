#include "blocks/resampler.h"

#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "support/failure.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

constexpr std::int64_t half_tap_n = 32;  // samples on each side of an output that it is made of

std::int64_t floor_of(std::int64_t a, std::int64_t b) {
    return a / b - (a % b < 0);
}

}  // namespace

Resampler::Resampler(int from_rate, int to_rate, double most_ratio, std::string file)
    : file_(std::move(file)), from_rate_(from_rate), to_rate_(to_rate) {
    const std::int64_t divisor = std::gcd(from_rate, to_rate);
    up_ = to_rate / divisor;
    down_ = from_rate / divisor;
    const double ratio = static_cast<double>(to_rate) / from_rate;
    if (std::max(ratio, 1 / ratio) > most_ratio)
        throw Failure(Exit::input_failed, file_,
                      "has a rate of " + std::to_string(from_rate) + " Hz, to become " +
                          std::to_string(to_rate),
                      "a factor of at most " + short_number(most_ratio) + ", --max-ratio",
                      "mend the header, say the true rate by --rate, or raise --max-ratio");
}

std::vector<float> Resampler::push(const std::vector<float>& samples) {
    samples_.insert(samples_.end(), samples.begin(), samples.end());
    sample_n_ += static_cast<std::int64_t>(samples.size());
    if (from_rate_ == to_rate_) return std::exchange(samples_, {});
    // Every call begins at a multiple of down_ and so repeats what lies before: few calls, then.
    const std::int64_t wanted_n = std::min<std::int64_t>(4 * down_, 1 << 20);
    if (static_cast<std::int64_t>(samples_.size()) < wanted_n) return {};
    // Outputs whose taps all lie before the end. Output i lies at (phase + i * down) / up.
    const std::int64_t phase = (up_ - 1) / 2;
    return outputs(-floor_of(phase - (sample_n_ - half_tap_n) * up_, down_));
}

std::vector<float> Resampler::flush() {
    if (from_rate_ == to_rate_) return {};
    const std::int64_t end = output_n(sample_n_);
    // The library stops where the sample nearest to an output is the last one. Two zeros more, and
    // the outputs behind that come as well, the nearest sample of the very last being the first
    // zero.
    samples_.resize(samples_.size() + 2);
    sample_n_ += 2;
    return outputs(end);
}

std::int64_t Resampler::output_n(std::int64_t sample_n) const {
    if (from_rate_ == to_rate_) return sample_n;
    int result = 0;
    if (sample_n > 0 && sample_n <= std::numeric_limits<int>::max() &&
        sorvoAudioGetResampleLen(&result, to_rate_, static_cast<int>(sample_n), from_rate_) ==
            SORVO_AUDIO_OK)
        return result;
    return static_cast<std::int64_t>(  // the same formula, beyond an int
        std::ceil(static_cast<double>(to_rate_) / from_rate_ * static_cast<double>(sample_n)));
}

// The last multiple of down_ samples, as a number of these, from which the next output is made.
std::int64_t Resampler::first_period() const {
    const std::int64_t position = ((up_ - 1) / 2 + output_n_ * down_) / up_;
    return std::max<std::int64_t>(0, floor_of(position - half_tap_n, down_));
}

std::vector<float> Resampler::outputs(std::int64_t end) {
    if (end <= output_n_) return {};
    const std::int64_t period = first_period();
    const float* const src = samples_.data() + (period * down_ - first_);
    const std::int64_t src_n = sample_n_ - period * down_;
    const std::int64_t dst_n = end - period * up_;
    if (dst_n > std::numeric_limits<int>::max() || src_n > std::numeric_limits<int>::max())
        throw Failure(Exit::input_failed, file_,
                      "takes too much at once from " + std::to_string(from_rate_) + " to " +
                          std::to_string(to_rate_) + " Hz",
                      "limit 2147483647 samples", "choose another rate");
    std::vector<float> result(static_cast<std::size_t>(dst_n));
    check_status(sorvoAudioResample(result.data(), src, to_rate_, static_cast<int>(dst_n),
                                    from_rate_, static_cast<int>(src_n)),
                 "sorvoAudioResample", file_);
    result.erase(result.begin(), result.begin() + (output_n_ - period * up_));
    output_n_ = end;

    const std::int64_t keep = std::min(first_period() * down_, sample_n_);
    samples_.erase(samples_.begin(), samples_.begin() + (keep - first_));
    first_ = keep;
    return result;
}

std::string describe_aliasing(int from_rate, int to_rate) {
    if (from_rate / 4.0 <= to_rate) return "";
    return "from " + std::to_string(from_rate) + " to " + std::to_string(to_rate) +
           " Hz, what lies above the new Nyquist frequency folds back; convert in steps, the last "
           "one from " +
           std::to_string(2 * static_cast<std::int64_t>(to_rate)) + " Hz";
}

}  // namespace sorvo_tool
