// What the process does around the calls: it forks while threads are at work, and it ends while
// calls are still made. Linked with the shared library, as its users are.
#include <gtest/gtest.h>
#include <sorvo_audio.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "robustness/child_process.h"

namespace sorvo::audio::test {
namespace {

constexpr unsigned patience_s = 20;

/// Calls that need tables of length n and others that only this key has, all of them small; true if
/// all succeed.
bool use_tables(int n, int key) {
    std::array<float, 1000> out{};
    const std::array<float, 1000> in{};
    const auto f_min = static_cast<float>(key);
    return sorvoAudioFFT(out.data(), in.data(), n) == SORVO_AUDIO_OK &&
           sorvoAudioIFFT(out.data(), in.data(), n) == SORVO_AUDIO_OK &&
           sorvoAudioGetWindow(out.data(), n, SORVO_AUDIO_WINDOW_HANN) == SORVO_AUDIO_OK &&
           sorvoAudioGetFBMatrix(out.data(), 9, f_min, f_min + 900.0F, 2, 8000, 0, 0) ==
               SORVO_AUDIO_OK &&
           sorvoAudioResample(out.data(), in.data(), 2, 10, 3 + 2 * key, 100) == SORVO_AUDIO_OK;
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
    constexpr int known_n = 100;
    for (int key = 0; key < known_n; ++key) {
        ASSERT_TRUE(use_tables(1 + key, key));
    }
    Workers workers([](int i) {
        const int key = i % 2 == 0 ? i / 2 % known_n : known_n + i;
        use_tables(1 + key % 300, key);
    });
    int lost = 0;
    for (int i = 0; i < 1000 && lost < 3; ++i) {
        workers.allow(30);
        const std::string end = run_in_child(patience_s, [i] {
            return i % 2 == 0 ? use_tables(1 + i % known_n, i % known_n)
                              : use_tables(301 + i % 100, 100000 + i);
        });
        EXPECT_EQ(end, "") << "child " << i;
        lost += end.empty() ? 0 : 1;
    }
}

}  // namespace
}  // namespace sorvo::audio::test
