// What the process does around the calls: it forks while threads are at work, and it ends while
// calls are still made. Linked with the shared library, as its users are.
#include <gtest/gtest.h>
#include <sorvo_audio.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "robustness/child_process.h"

namespace sorvo::audio::test {
namespace {

constexpr unsigned patience_s = 20;

/// The sum of the results of calls that need tables of length n and others that only this key has,
/// all of them small; NaN if one fails.
float use_tables(int n, int key) {
    std::array<float, 1000> out{};
    std::array<float, 1000> in{};
    std::iota(in.begin(), in.end(), 1.0F);
    const auto f_min = static_cast<float>(key);
    float sum = 0.0F;
    for (const int status :
         {sorvoAudioFFT(out.data(), in.data(), n), sorvoAudioIFFT(out.data() + 200, in.data(), n),
          sorvoAudioGetWindow(out.data() + 400, n, SORVO_AUDIO_WINDOW_HANN),
          sorvoAudioGetFBMatrix(out.data() + 500, 9, f_min, f_min + 900.0F, 2, 8000, 0, 0),
          sorvoAudioResample(out.data() + 600, in.data(), 2, 10, 3 + 2 * key, 100)}) {
        sum += status == SORVO_AUDIO_OK ? 0.0F : std::numeric_limits<float>::quiet_NaN();
    }
    return std::accumulate(out.begin(), out.end(), sum);
}

/// Threads that call body(0), body(1), ..., each number once, as far as they are allowed to.
class Workers {
  public:
    explicit Workers(std::function<void(int)> body) : body_(std::move(body)) {
        for (std::thread& thread : threads_) {
            thread = std::thread([this] { work(); });
        }
    }
    ~Workers() {
        stop_ = true;
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    void allow(int n) { end_ += n; }

  private:
    void work() {
        for (int i = next_++; !stop_; i = next_++) {
            while (i >= end_ && !stop_) {
                std::this_thread::sleep_for(std::chrono::microseconds(50));
            }
            body_(i);
        }
    }

    std::function<void(int)> body_;
    std::atomic<bool> stop_{false};
    std::atomic<int> next_{0};
    std::atomic<int> end_{0};
    std::array<std::thread, 3> threads_;
};

// Every other child needs tables that the parent has, the others need new ones.
TEST(Fork, LeavesChildrenOfABusyProcessEveryTable) {
    std::vector<float> known;
    for (int key = 0; key < 60; ++key) {
        known.push_back(use_tables(1 + key, key));
    }
    const int known_n = static_cast<int>(known.size());
    Workers workers([known_n](int i) {
        const int key = i % 2 == 0 ? i / 2 % known_n : known_n + i;
        use_tables(1 + key % 80, key);
    });
    int lost = 0;
    for (int i = 0; i < 1000 && lost < 3; ++i) {
        workers.allow(30);
        const std::string end = run_in_child(patience_s, [&] {
            const int key = i % known_n;
            return i % 2 == 0 ? use_tables(1 + key, key) == known[static_cast<std::size_t>(key)]
                              : std::isfinite(use_tables(81 + i % 20, 100000 + i));
        });
        EXPECT_EQ(end, "") << "child " << i;
        lost += end.empty() ? 0 : 1;
    }
}

/// What shall happen while this process ends: in the destructor of a static object, then in an exit
/// handler, both older than any call.
struct AtExit {
    AtExit() {
        std::atexit([] { in_handler(); });
    }
    ~AtExit() { in_destructor(); }
    static void (*in_destructor)();
    static void (*in_handler)();
};
void (*AtExit::in_destructor)() = [] {};
void (*AtExit::in_handler)() = [] {};
const AtExit older_than_any_call;

float first_sum = 0.0F;

[[noreturn]] void end_with_calls() {
    ::_exit(use_tables(30, 30) == first_sum && use_tables(90, 9000) > 0.0F ? 0 : 2);
}

/// How a process ends that has made calls and sets what happens then.
std::string end_of_process(const std::function<void()>& set) {
    return run_in_child(patience_s, [&set] {
        set();
        first_sum = use_tables(30, 30);
        std::exit(1);
        return false;
    });
}

TEST(Exit, LeavesTheTablesToHandlersAndDestructorsOlderThanTheFirstCall) {
    EXPECT_EQ(end_of_process([] { AtExit::in_handler = end_with_calls; }), "");
    EXPECT_EQ(end_of_process([] { AtExit::in_destructor = end_with_calls; }), "");
}

TEST(Exit, LeavesTheTablesToThreadsThatGoOn) {
    static std::atomic<int> right_n{0};
    static std::atomic<int> wrong_n{0};
    EXPECT_EQ(
        end_of_process([] {
            std::thread([] {
                const float sum = use_tables(20, 20);
                for (int key = 0;; ++key) {
                    ++(use_tables(20, 20) == sum && use_tables(50, key) > 0.0F ? right_n : wrong_n);
                }
            }).detach();
            AtExit::in_handler = [] {
                for (const int end = right_n + 300; right_n < end && wrong_n == 0;) {
                    std::this_thread::yield();
                }
                ::_exit(wrong_n == 0 ? 0 : 2);
            };
        }),
        "");
}

}  // namespace
}  // namespace sorvo::audio::test
