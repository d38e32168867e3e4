#include "support/progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <utility>

#include "support/text.h"

namespace sorvo_tool {
namespace {

using Clock = std::chrono::steady_clock;

std::string clock_time(double seconds) {
    const auto whole = static_cast<long long>(std::ceil(seconds));
    std::array<char, 48> text{};
    if (whole >= 3600)
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    else
        std::snprintf(text.data(), text.size(), "%02lld:%02lld", whole / 60, whole % 60);
    return text.data();
}

}  // namespace

Progress::Progress(std::string name, std::size_t job_n)
    : name_(std::move(name)),
      job_n_(job_n),
      start_(Clock::now()),
      is_terminal_(isatty(STDERR_FILENO) != 0) {}

double Progress::elapsed() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

double Progress::times_real_time() const {
    return sound_seconds_ / std::max(elapsed(), 1e-9);
}

void Progress::job_ended(double sound_seconds, bool failed) {
    const std::size_t done_before = done_n_++;
    failed_n_ += failed;
    sound_seconds_ += sound_seconds;
    if (is_terminal_)
        draw_bar();
    else
        print_tenth(done_before);
}

void Progress::draw_bar() {
    const auto now = Clock::now();
    if (done_n_ < job_n_ && now - drawn_ < std::chrono::milliseconds(100)) return;
    drawn_ = now;
    constexpr std::size_t bar_n = 24;
    const std::size_t filled_n = bar_n * done_n_ / job_n_;
    const double left =
        elapsed() / static_cast<double>(done_n_) * static_cast<double>(job_n_ - done_n_);
    std::fprintf(stderr, "\r\033[K%s [%s%s] %zu/%zu  %.0f x real time  %s left  %zu failed",
                 name_.c_str(), std::string(filled_n, '#').c_str(),
                 std::string(bar_n - filled_n, '.').c_str(), done_n_, job_n_, times_real_time(),
                 clock_time(left).c_str(), failed_n_);
    std::fflush(stderr);
}

void Progress::print_tenth(std::size_t done_before) {
    if (done_n_ * 10 / job_n_ == done_before * 10 / job_n_) return;
    std::fprintf(stderr, "%s: %zu/%zu done, %.0f x real time, %zu failed\n", name_.c_str(), done_n_,
                 job_n_, times_real_time(), failed_n_);
}

void Progress::clear() {
    if (is_terminal_) std::fputs("\r\033[K", stderr);
}

}  // namespace sorvo_tool
