// Hostile arguments: no access outside the documented buffers, no crash, no hang, the documented
// status.
#include <gtest/gtest.h>
#include <sorvo_audio.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <random>

#include "robustness/child_process.h"
#include "robustness/guarded_buffer.h"
#include "robustness/planned_call.h"

namespace sorvo::audio::test {
namespace {

using Against = GuardedBuffer::Against;

constexpr std::size_t memory_limit = std::size_t{512} << 20U;
constexpr unsigned time_limit_s = 30;

#ifdef SORVO_TEST_SANITIZED
// A sanitizer ends the process where memory cannot be had, so nothing that needs a refusal can be
// tested.
constexpr bool memory_can_be_refused = false;
constexpr unsigned call_n = 3000;
#else
constexpr bool memory_can_be_refused = true;
constexpr unsigned call_n = 12000;
#endif

class HostileNumbers : public ArgumentSource {
  public:
    explicit HostileNumbers(unsigned seed) : engine_(seed) {}

    int integer() override {
        constexpr std::array<int, 12> hostile = {std::numeric_limits<int>::min(),
                                                 -1,
                                                 0,
                                                 1,
                                                 2,
                                                 (1 << 24) + 1,
                                                 1 << 30,
                                                 46341,
                                                 65536,
                                                 std::numeric_limits<int>::max() - 1,
                                                 std::numeric_limits<int>::max(),
                                                 -65536};
        constexpr std::array<int, 12> ordinary = {1, 1, 2, 3, 4, 7, 8, 16, 25, 64, 100, 1000};
        return choice(7) == 0 ? hostile[static_cast<std::size_t>(choice(12))]
                              : ordinary[static_cast<std::size_t>(choice(12))];
    }
    float real() override {
        using limits = std::numeric_limits<float>;
        const std::array<float, 12> numbers = {0.0F,
                                               1.0F,
                                               2.0F,
                                               0.5F,
                                               -0.0F,
                                               -1.0F,
                                               limits::max(),
                                               limits::denorm_min(),
                                               8000.0F,
                                               40.0F,
                                               limits::infinity(),
                                               limits::quiet_NaN()};
        return numbers[static_cast<std::size_t>(choice(12))];
    }
    int choice(int n) override { return std::uniform_int_distribution<int>(0, n - 1)(engine_); }

  private:
    std::mt19937 engine_;
};

/// Makes the call in this process; true for a status that the header allows.
bool call_with_guards(const PlannedCall& call, Against against, HostileNumbers& numbers) {
    std::vector<std::unique_ptr<GuardedBuffer>> buffers;
    std::vector<void*> pointers;
    for (const double bytes : call.buffer_bytes) {
        // What is refused must not touch any buffer at all.
        const auto size = call.valid ? static_cast<std::size_t>(bytes) : 0;
        buffers.push_back(std::make_unique<GuardedBuffer>(size, against));
        pointers.push_back(buffers.back()->data());
        for (std::size_t i = 0; i < std::min<std::size_t>(size / 4, 1000); ++i) {
            buffers.back()->floats()[i] = numbers.real();
        }
    }
    limit_memory(memory_limit);
    const int status = call.invoke(pointers);
    if (!call.valid) {
        return status == SORVO_AUDIO_ERROR_ARGUMENT;
    }
    return status == SORVO_AUDIO_OK || status == SORVO_AUDIO_ERROR_MEMORY ||
           (status == SORVO_AUDIO_ERROR_INTERNAL && call.text.find("Len(") != std::string::npos);
}

/// Larger calls would only measure the machine: their buffers do not fit, or they run for long
/// because the work is long. What asks for far more memory than it gets must fail promptly, so it
/// is called.
bool is_feasible(const PlannedCall& call) {
    double bytes = 0.0;
    for (const double b : call.buffer_bytes) {
        bytes += b;
    }
    return !call.valid || (bytes < 6e10 && (call.work < 2e8 || call.storage > 2e9));
}

TEST(HostileArguments, GetAStatusAndNothingElse) {
    std::map<std::string, int> made;
    for (unsigned seed = 1; seed <= call_n; ++seed) {
        HostileNumbers numbers(seed);
        const PlannedCall call = plan_call(numbers);
        if (!is_feasible(call) || (!memory_can_be_refused && call.storage > 1e8)) {
            continue;
        }
        made[call.text.substr(0, call.text.find('('))] += call.valid ? 1 : 0;
        const Against against = seed % 2 == 0 ? Against::lower_page : Against::upper_page;
        EXPECT_EQ(
            run_in_child(time_limit_s, [&] { return call_with_guards(call, against, numbers); }),
            "")
            << "seed " << seed << ": " << call.text;
    }
    EXPECT_EQ(made.size(), export_count);
    for (const auto& [name, accepted_n] : made) {
        EXPECT_GE(accepted_n, memory_can_be_refused ? 4 : 1)
            << name << " was hardly ever called with accepted arguments";
    }
}

/// A body on guarded buffers of these sizes (in floats), in a process of its own.
template <class Body>
std::string on_buffers(double dst_n, double src_n, Body body) {
    return run_in_child(time_limit_s, [&] {
        const GuardedBuffer dst(static_cast<std::size_t>(4 * dst_n), Against::upper_page);
        const GuardedBuffer src(static_cast<std::size_t>(4 * src_n), Against::upper_page);
        limit_memory(memory_limit);
        return body(dst.floats(), src.floats());
    });
}

constexpr int int_max = std::numeric_limits<int>::max();

TEST(NamedArguments, FloatFrameCountsRunPastTheEndOfALongSignal) {
    // float(2^31 - 1) is 2^31: frame 128 starts behind the last sample.
    constexpr int hop_n = 1 << 24;
    for (const int center : {0, 1, 2}) {
        int frame_n = 0;
        ASSERT_EQ(sorvoAudioGetFrameLen(&frame_n, int_max, 16, hop_n, center), SORVO_AUDIO_OK);
        ASSERT_EQ(frame_n, 129);
        EXPECT_EQ(on_buffers(9.0 * 129 * 2, int_max,
                             [&](float* dst, const float* src) {
                                 return sorvoAudioGetSpectrogram(dst, src, int_max, 16, hop_n, 16,
                                                                 1, 129, center, 2.0F, 0) == 0 &&
                                        dst[2 * 128] == 0.0F;
                             }),
                  "")
            << "spectrogram, center " << center;
        EXPECT_EQ(on_buffers(4.0 * 129, int_max,
                             [&](float* dst, const float* src) {
                                 return sorvoAudioGetMelSpectrogram(dst, src, int_max, 16000, 16,
                                                                    hop_n, 16, 1, 129, center, 2.0F,
                                                                    0, 0.0F, 8000.0F, 4, 0, 0) == 0;
                             }),
                  "")
            << "mel, center " << center;
    }
}

TEST(NamedArguments, IndicesBeyond31Bits) {
    // Row stride 2^31 - 1 frames, two of which are computed.
    EXPECT_EQ(on_buffers(9.0 * int_max * 2, 20,
                         [](float* dst, const float* src) {
                             dst[2 * static_cast<std::size_t>(int_max) * 8 + 4] = 5.0F;
                             return sorvoAudioGetSpectrogram(dst, src, 20, 16, 4, 16, 1, int_max, 0,
                                                             0.0F, 0) == 0 &&
                                    dst[2 * static_cast<std::size_t>(int_max) * 8 + 4] == 5.0F;
                         }),
              "");
}

TEST(NamedArguments, CoprimeRatesFailBeforeTheyFillTheMemory) {
    if (!memory_can_be_refused) {
        GTEST_SKIP() << "a sanitizer does not let memory be refused";
    }
    for (const int rate : {int_max, 10000019}) {
        EXPECT_EQ(on_buffers(100, 100,
                             [&](float* dst, const float* src) {
                                 const bool refused =
                                     sorvoAudioResample(dst, src, rate, 100, rate - 1, 100) ==
                                     SORVO_AUDIO_ERROR_MEMORY;
                                 rusage used = {};
                                 ::getrusage(RUSAGE_SELF, &used);
                                 return refused && used.ru_maxrss < 100000 &&  // kB
                                        sorvoAudioResample(dst, src, 16000, 100, 8000, 100) == 0;
                             }),
                  "")
            << rate;
    }
}

TEST(NamedArguments, ExtensionsNearTheLargestInt) {
    if (!memory_can_be_refused) {
        GTEST_SKIP() << "a sanitizer does not let memory be refused";
    }
    const std::array<float, 2> b = {0.5F, 0.5F};
    const std::array<float, 2> a = {1.0F, 0.0F};
    EXPECT_EQ(on_buffers(10, 10,
                         [&](float* dst, const float* src) {
                             const auto call = [&](int type, int pad) {
                                 return sorvoAudioFilterFilter(dst, src, b.data(), a.data(), 10, 10,
                                                               2, 2, type, pad);
                             };
                             return call(3, int_max) == SORVO_AUDIO_ERROR_MEMORY &&
                                    call(1, 10) == SORVO_AUDIO_ERROR_ARGUMENT &&
                                    call(2, int_max) == SORVO_AUDIO_ERROR_ARGUMENT &&
                                    call(3, 100000) == SORVO_AUDIO_OK && call(0, int_max) == 0;
                         }),
              "");
}

TEST(NamedArguments, InverseAtItsLimits) {
    if (!memory_can_be_refused) {
        GTEST_SKIP() << "a sanitizer does not let memory be refused";
    }
    EXPECT_EQ(on_buffers(1000, 100,
                         [](float* dst, const float* src) {
                             const auto call = [&](int frame_n, int freq_n, int hop_n, int max_n) {
                                 return sorvoAudioGetInverseSpectrogram(dst, src, frame_n, freq_n,
                                                                        hop_n, 8, 1, max_n, 1, 0);
                             };
                             return call(10, 1, 4, 1000) == SORVO_AUDIO_ERROR_ARGUMENT &&
                                    call(10, 5, 4, 1000) == SORVO_AUDIO_OK &&
                                    call(10, 5, int_max, 1000) == SORVO_AUDIO_ERROR_MEMORY &&
                                    call(1, (1 << 30) + 7, 1, 1) == SORVO_AUDIO_ERROR_MEMORY;
                         }),
              "");
}

TEST(NamedArguments, OneSampleReflectsOntoItself) {
    EXPECT_EQ(on_buffers(2 * 2, 1,
                         [](float* dst, float* src) {
                             src[0] = 3.0F;
                             int pos = 0;
                             int len = 0;
                             return sorvoAudioGetSpectrogram(dst, src, 1, 1, 1, 1, 2, 2, 1, 0.0F,
                                                             0) == 0 &&
                                    dst[0] == dst[2] && dst[0] != 0.0F &&
                                    sorvoAudioGetNonSilentPos(&pos, &len, src, 1, 1, 0, 40.0F) ==
                                        0 &&
                                    pos == -1 && len == 0;
                         }),
              "");
}

TEST(NamedArguments, NanMelBoundsDisturbNoOtherBank) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto bank = [](float f_min, float f_max) {
        std::vector<float> weights(10 * 33);
        EXPECT_EQ(sorvoAudioGetFBMatrix(weights.data(), 33, f_min, f_max, 10, 16000, 0, 0), 0);
        return weights;
    };
    const std::vector<float> before = bank(20.0F, 7000.0F);
    for (const auto& [f_min, f_max] : {std::pair(nan, 7000.0F), {20.0F, nan}, {nan, nan}}) {
        for (const float w : bank(f_min, f_max)) {
            ASSERT_TRUE(std::isnan(w));
        }
        bank(30.0F, 6000.0F + static_cast<float>(std::isnan(f_min)));
    }
    EXPECT_EQ(std::memcmp(before.data(), bank(20.0F, 7000.0F).data(), before.size() * 4), 0);
}

}  // namespace
}  // namespace sorvo::audio::test
