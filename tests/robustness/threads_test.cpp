// Many threads call everything at once from a cold start, on keys that all share and on keys of
// their own.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <set>
#include <thread>

#include "fft/fft_table.h"
#include "mel/mfb_table.h"
#include "resample/resample_filter_table.h"
#include "robustness/sample_calls.h"
#include "stft/window_table.h"

namespace sorvo::audio::test {
namespace {

constexpr int thread_n = 8;

/// Runs body(0 ... 7) in threads that start together.
template <class Body>
void run_in_threads(Body body) {
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < thread_n; ++i) {
        threads.emplace_back([&ready, body, i] {
            ++ready;
            while (ready < thread_n) {
            }
            body(i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// First in this program, so that the caches are cold.
TEST(Threads, GetTheBitsOfASingleThread) {
    const std::vector<SampleCall>& calls = sample_calls();
    using Outputs = std::vector<std::vector<float>>;
    std::vector<Outputs> outputs(thread_n);
    const auto call_all = [&calls](int own_variant) {
        Outputs all;
        for (std::size_t i = 0; i < 2 * calls.size(); ++i) {
            const int variant = i % 2 == 0 ? 0 : own_variant;
            all.push_back(outputs_of(calls[i / 2], variant));
        }
        return all;
    };
    run_in_threads(
        [&](int thread) { outputs[static_cast<std::size_t>(thread)] = call_all(1 + thread); });
    for (int thread = 0; thread < thread_n; ++thread) {
        const Outputs expected = call_all(1 + thread);
        const Outputs& got = outputs[static_cast<std::size_t>(thread)];
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(std::memcmp(got[i].data(), expected[i].data(), 4 * got[i].size()), 0)
                << calls[i / 2].name << ", thread " << thread;
        }
    }
}

TEST(Threads, ShareOneTableForEachKey) {
    std::vector<std::vector<const void*>> addresses(thread_n);
    run_in_threads([&addresses](int thread) {
        auto& mine = addresses[static_cast<std::size_t>(thread)];
        for (int n = 300; n < 330; ++n) {
            mine.push_back(&FftTable::instance().ref_table(n));
            mine.push_back(&FftTable::instance().ref_inv_table(n));
            mine.push_back(&WindowTable::instance().ref_table(n, 1));
            mine.push_back(&WindowTable::instance().ref_table(n, 2));
            mine.push_back(&MFBTable::instance().ref_table(n, 0.0F, 4000.0F, 9, 8000, 1, true));
            mine.push_back(&ResampleFilterTable::instance().ref_coef(n, 301));
            mine.push_back(&ResampleFilterTable::instance().ref_kiro(n, 301));
        }
    });
    for (const auto& mine : addresses) {
        EXPECT_EQ(mine, addresses[0]);
    }
    const std::set<const void*> distinct(addresses[0].begin(), addresses[0].end());
    EXPECT_EQ(distinct.size(), addresses[0].size());
}

}  // namespace
}  // namespace sorvo::audio::test
