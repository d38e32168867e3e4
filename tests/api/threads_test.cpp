// Many threads ask for new and for equal tables at once.

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "fft/fft_table.h"
#include "mel/mfb_table.h"
#include "resample/resample_filter_table.h"
#include "sorvo_audio.h"
#include "stft/window_table.h"
#include "support/compare.h"
#include "support/random.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

constexpr int thread_n = 8;

/// Runs work(i) in thread i; all begin together.
template <class Work>
void in_threads(Work work) {
    std::atomic<int> waiting = thread_n;
    std::vector<std::thread> threads;
    for (int i = 0; i < thread_n; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting > 0) std::this_thread::yield();
            work(static_cast<std::size_t>(i));
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(Threads, GetTheSameTables) {
    constexpr int key_n = 40;
    std::vector<std::vector<const void*>> seen(thread_n);
    in_threads([&](std::size_t thread) {
        for (int key = 0; key < key_n; ++key) {
            const int n = 700 + key;
            ResampleFilterTable& resampling = ResampleFilterTable::instance();
            seen[thread].insert(
                seen[thread].end(),
                {&FftTable::instance().ref_table(n), &FftTable::instance().ref_inv_table(n),
                 &WindowTable::instance().ref_table(n, 1), &WindowTable::instance().ref_table(n, 2),
                 &MFBTable::instance().ref_table(20, 0.0F, 4000.0F, 1 + key % 7, n, 1,
                                                 key % 2 == 0),
                 &resampling.ref_coef(n, 701), &resampling.ref_diff(n, 701),
                 &resampling.ref_kiro(n, 701)});
        }
    });
    for (const auto& addresses : seen) EXPECT_EQ(addresses, seen[0]);
    EXPECT_EQ(std::set<const void*>(seen[0].begin(), seen[0].end()).size(), seen[0].size());
}

TEST(Threads, GetTheSameResults) {
    Random random(51);
    const std::vector<float> x = random.values(2000);
    const auto features = [&] {
        std::vector<float> out(40 * 20 + 2000 + 4096);
        sorvoAudioGetMelSpectrogram(out.data(), x.data(), 2000, 16000, 300, 100, 300, 1, 20, 1,
                                    2.0F, 0, 0.0F, 8000.0F, 40, 1, 0);
        sorvoAudioResample(out.data() + 800, x.data(), 16001, 2000, 16000, 2000);
        sorvoAudioIFFT(out.data() + 2800, x.data(), 997);
        return out;
    };
    std::vector<std::vector<float>> results(thread_n);
    in_threads([&](std::size_t thread) { results[thread] = features(); });
    const std::vector<float> alone = features();
    for (const auto& result : results) EXPECT_TRUE(same_bits(result, alone));
}

}  // namespace
