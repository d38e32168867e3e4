#include "util/table_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <numeric>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using sorvo::audio::Cache;
using sorvo::audio::TableCache;
using Tables = TableCache<int, std::vector<int>>;

// Threads look all keys up in orders of their own, so that every key is sought while its neighbours
// come and go into the list.
TEST(TableCache, BuildsEachTableOnceAndFindsItFromThenOn) {
    constexpr int key_n = 5000;
    static Tables cache(Cache::fft);
    static std::array<std::atomic<int>, key_n> built{};
    std::array<std::vector<const void*>, 4> addresses;
    std::array<std::thread, 4> threads;
    for (std::size_t t = 0; t < threads.size(); ++t) {
        threads[t] = std::thread([t, &found = addresses[t]] {
            std::vector<int> keys(key_n);
            std::iota(keys.begin(), keys.end(), 0);
            std::shuffle(keys.begin(), keys.end(), std::mt19937(static_cast<unsigned>(t)));
            found.resize(key_n);
            for (const int key : keys) {
                const auto build = [key] {
                    ++built[static_cast<std::size_t>(key)];
                    return std::vector<int>{key, -key};
                };
                const std::vector<int>& table = cache.ref(2 * key, build);
                EXPECT_EQ(table, (std::vector<int>{key, -key}));
                EXPECT_EQ(cache.find(2 * key), &table);
                EXPECT_EQ(cache.find(2 * key + 1), nullptr);
                found[static_cast<std::size_t>(key)] = &table;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(std::all_of(built.begin(), built.end(), [](int n) { return n == 1; }));
    for (const auto& found : addresses) {
        EXPECT_EQ(found, addresses[0]);
    }
}

TEST(TableCache, ForgetsABuildThatFailed) {
    static Tables cache(Cache::fft);
    const auto fail = []() -> std::vector<int> { throw std::runtime_error("no table"); };
    EXPECT_THROW(cache.ref(1, fail), std::runtime_error);
    EXPECT_EQ(cache.find(1), nullptr);
    EXPECT_EQ(cache.ref(1, [] { return std::vector<int>{7}; }), std::vector<int>{7});
    EXPECT_EQ(cache.ref(1, fail), std::vector<int>{7});
}

}  // namespace
