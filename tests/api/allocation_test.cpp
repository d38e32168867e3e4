// Memory that cannot be had: whichever allocation of a call fails, the status says so, and the same
// call works afterwards. In particular no cache keeps a table that was not completed.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/random.h"

namespace {

/// Allocations until one fails; negative: none does.
long countdown = -1;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (countdown >= 0 && countdown-- == 0) throw std::bad_alloc();
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using sorvo::test::Random;
using sorvo::test::same_bits;

struct Call {
    std::string name;
    std::function<int(float* dst, const float* src)> run;
};

constexpr std::size_t room = 4096;

/// The result in a process of its own, whose caches no failure has seen.
std::vector<float> undisturbed(const Call& call, const std::vector<float>& src) {
    std::vector<float> dst(room);
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        call.run(dst.data(), src.data());
        const bool written = write(ends[1], dst.data(), room * sizeof(float)) > 0;
        _exit(written ? 0 : 1);
    }
    EXPECT_EQ(read(ends[0], dst.data(), room * sizeof(float)),
              static_cast<ssize_t>(room * sizeof(float)));
    waitpid(child, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
    return dst;
}

class Allocation : public testing::TestWithParam<Call> {};

TEST_P(Allocation, MayFailAnywhereAndIsRepeated) {
    Random random(61);
    const std::vector<float> src = random.values(room);
    const std::vector<float> expected = undisturbed(GetParam(), src);
    std::vector<float> dst(room);
    int status = SORVO_AUDIO_ERROR_MEMORY;
    long failures = 0;
    for (; status != SORVO_AUDIO_OK && failures < 2000; ++failures) {
        countdown = failures;
        status = GetParam().run(dst.data(), src.data());
        const bool none_failed = countdown >= 0;
        countdown = -1;
        ASSERT_EQ(status, none_failed ? SORVO_AUDIO_OK : SORVO_AUDIO_ERROR_MEMORY) << failures;
    }
    EXPECT_GT(failures, 1) << "the call allocates nothing";
    EXPECT_TRUE(same_bits(dst, expected));
}

const std::vector<float> b = {0.1F, 0.2F, 0.3F};
const std::vector<float> a = {1.0F, -0.4F, 0.1F};

INSTANTIATE_TEST_SUITE_P(
    Exports, Allocation,
    testing::Values(
        Call{"FFT_pow2", [](float* y, const float* x) { return sorvoAudioFFT(y, x, 64); }},
        Call{"FFT_general", [](float* y, const float* x) { return sorvoAudioFFT(y, x, 60); }},
        Call{"IFFT", [](float* y, const float* x) { return sorvoAudioIFFT(y, x, 66); }},
        Call{"GetWindow", [](float* y, const float*) { return sorvoAudioGetWindow(y, 90, 2); }},
        Call{"GetSpectrogram",
             [](float* y, const float* x) {
                 return sorvoAudioGetSpectrogram(y, x, 300, 36, 20, 33, 1, 12, 1, 1.0F, 1);
             }},
        Call{"GetInverseSpectrogram",
             [](float* y, const float* x) {
                 return sorvoAudioGetInverseSpectrogram(y, x, 7, 29, 14, 56, 1, 100, 1, 0);
             }},
        Call{"GetFBMatrix",
             [](float* y, const float*) {
                 return sorvoAudioGetFBMatrix(y, 40, 0.0F, 4000.0F, 12, 8000, 1, 0);
             }},
        Call{"GetMelSpectrogram",
             [](float* y, const float* x) {
                 return sorvoAudioGetMelSpectrogram(y, x, 300, 8000, 70, 20, 69, 2, 9, 2, 2.0F, 0,
                                                    0.0F, 4000.0F, 10, 0, 1);
             }},
        Call{"LinerFilter",
             [](float* y, const float* x) {
                 return sorvoAudioLinerFilter(y, x, b.data(), a.data(), nullptr, 50, 50, 3, 3, 0);
             }},
        Call{"GetLinerFilterZiCoef",
             [](float* y, const float*) {
                 return sorvoAudioGetLinerFilterZiCoef(y, b.data(), a.data(), 2, 3, 3);
             }},
        Call{"FilterFilter",
             [](float* y, const float* x) {
                 return sorvoAudioFilterFilter(y, x, b.data(), a.data(), 50, 50, 3, 3, 1, 9);
             }},
        Call{"Resample",
             [](float* y, const float* x) { return sorvoAudioResample(y, x, 11, 100, 7, 60); }},
        Call{"MagPhase",
             [](float* y, const float* x) {
                 return sorvoAudioMagPhase(y, y + 100, x, 5, 20, 1, 1.0F);
             }},
        Call{"GetNonSilentPos",
             [](float* y, const float* x) {
                 int pos = 0;
                 int len = 0;
                 const int status = sorvoAudioGetNonSilentPos(&pos, &len, x, 300, 30, 10, 3.0F);
                 y[0] = static_cast<float>(pos);
                 y[1] = static_cast<float>(len);
                 return status;
             }}),
    [](const auto& call) { return call.param.name; });

}  // namespace
