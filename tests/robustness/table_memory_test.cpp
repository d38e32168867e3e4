// What tables cost that stay until the process ends, against the sizes that docs/safety.md gives.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sorvo_audio.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <numeric>
#include <vector>

namespace {

// Bytes in use, with what the allocator adds to each piece.
std::atomic<long> bytes_in_use{0};

long bytes_of(void* memory) {
    return memory == nullptr
               ? 0
               : static_cast<long>(::malloc_usable_size(memory) + sizeof(std::size_t));
}

void release(void* memory) {
    bytes_in_use -= bytes_of(memory);
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t bytes) {
    void* const memory = std::malloc(bytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    bytes_in_use += bytes_of(memory);
    return memory;
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}

namespace sorvo::audio::test {
namespace {

constexpr int key_n = 10000;

/// Makes the call with 10000 keys, each of which may leave so many bytes behind at its first use
/// and none at its second.
void expect_cost(const std::function<int(int key)>& call,
                 const std::function<long(int key)>& most) {
    for (int key = 0; key < key_n; ++key) {
        const long before = bytes_in_use;
        ASSERT_EQ(call(key), SORVO_AUDIO_OK) << key;
        const long after = bytes_in_use;
        ASSERT_LE(after - before, most(key)) << key;
        ASSERT_GT(after, before) << key << " needed no table";
        ASSERT_EQ(call(key), SORVO_AUDIO_OK) << key;
        ASSERT_EQ(bytes_in_use, after) << key;
    }
}

// Plans are kept for the lengths that were used last, so that only the sum has a bound.
TEST(TableMemory, OfTransforms) {
    constexpr int most_n = 2000;
    std::vector<float> out(2 * most_n);
    const std::vector<float> in(2 * most_n);
    const long before = bytes_in_use;
    long most = 8L << 20U;
    for (int n = 1; n <= most_n; ++n) {
        ASSERT_EQ(sorvoAudioFFT(out.data(), in.data(), n), SORVO_AUDIO_OK);
        ASSERT_EQ(sorvoAudioIFFT(out.data(), in.data(), n), SORVO_AUDIO_OK);
        const bool pow2 = (n & (n - 1)) == 0;
        most += 2 * (pow2 ? 37L * n + 1000 : 8L * n + 150);
        ASSERT_LE(bytes_in_use - before, most) << n;
    }
}

TEST(TableMemory, OfWindows) {
    std::vector<float> out(key_n);
    for (const int type : {SORVO_AUDIO_WINDOW_HANN, SORVO_AUDIO_WINDOW_HAMMING}) {
        expect_cost([&](int key) { return sorvoAudioGetWindow(out.data(), 1 + key, type); },
                    [](int key) { return 4L * (1 + key) + 200; });
    }
}

TEST(TableMemory, OfFilterBanks) {
    std::vector<float> out(300 * 100);
    const auto mel_n = [](int key) { return 1 + key % 80; };
    const auto freq_n = [](int key) { return 81 + key % 200; };
    expect_cost(
        [&](int key) {
            return sorvoAudioGetFBMatrix(out.data(), freq_n(key), 0.0F, 8000.0F, mel_n(key),
                                         16000 + key, 0, 0);
        },
        [&](int key) { return (4L * freq_n(key) + 72) * mel_n(key) + 250; });
}

TEST(TableMemory, OfResamplingFilters) {
    std::vector<float> out(10);
    const auto up = [](int key) { return 1 + key % 20; };
    expect_cost(
        [&](int key) {
            const int down = up(key) * (key / 20) + 1;  // coprime, and another for each key
            return sorvoAudioResample(out.data(), out.data(), up(key), 5, down, 5);
        },
        [&](int key) { return (up(key) < 8 ? 4200L : 1500L) * up(key) + 500; });
}

// All that there is for a length: both directions, single and as frames, and the window,
// which is the last test because others count windows.
TEST(TableMemory, OfLongPowersOfTwo) {
    constexpr int frame_n = 40;
    constexpr int hann = SORVO_AUDIO_WINDOW_HANN;
    constexpr int none = 0;  // of center and norm
    for (int n = 1 << 12; n <= 1 << 15; n *= 2) {
        const int sample_n = n + frame_n - 1;
        const int bin_n = n / 2 + 1;
        std::vector<float> x(static_cast<std::size_t>(2 * sample_n));
        std::vector<float> out(static_cast<std::size_t>(2 * bin_n * frame_n));
        const long before = bytes_in_use;
        ASSERT_EQ(sorvoAudioFFT(out.data(), x.data(), n), SORVO_AUDIO_OK);
        ASSERT_EQ(sorvoAudioIFFT(out.data(), x.data(), n), SORVO_AUDIO_OK);
        ASSERT_EQ(sorvoAudioGetSpectrogram(out.data(), x.data(), sample_n, n, 1, n, hann, frame_n,
                                           none, 0.0F, none),
                  SORVO_AUDIO_OK);
        ASSERT_EQ(sorvoAudioGetInverseSpectrogram(x.data(), out.data(), frame_n, bin_n, 1, n, hann,
                                                  sample_n, none, none),
                  SORVO_AUDIO_OK);
        EXPECT_LE(bytes_in_use - before, 2 * (37L * n + 1000) + 4L * n + 200) << n;
        EXPECT_GT(bytes_in_use - before, 2 * 24L * n) << n << ", of which tables are half";
    }
}

}  // namespace
}  // namespace sorvo::audio::test
