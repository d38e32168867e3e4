// Threads with little stack: a call gets 16 KiB, below which everything is inaccessible, so that a
// frame that skips a guard page is found as well.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sorvo_audio.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "robustness/child_process.h"
#include "robustness/sample_calls.h"

namespace sorvo::audio::test {
namespace {

constexpr std::size_t promised_bytes = std::size_t{16} << 10U;
constexpr std::size_t watched_bytes = std::size_t{4} << 20U;

struct Call {
    const std::function<int()>* work;
    int status;
};

void* make(void* argument) {
    auto* const call = static_cast<Call*>(argument);
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    const std::uintptr_t end = (here - promised_bytes) / page * page;
    auto* const watched = reinterpret_cast<void*>(end - watched_bytes);
    if (::mprotect(watched, watched_bytes, PROT_NONE) == 0) {
        call->status = (*call->work)();
        ::mprotect(watched, watched_bytes, PROT_READ | PROT_WRITE);
    }
    return nullptr;
}

/// The call's status, from a thread that ends the process if it needs more stack.
int on_small_stack(const std::function<int()>& work) {
    Call call = {&work, -1000};
    pthread_attr_t attributes;
    pthread_t thread{};
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, watched_bytes + (std::size_t{1} << 20U));
    if (::pthread_create(&thread, &attributes, make, &call) == 0) {
        ::pthread_join(thread, nullptr);
    }
    ::pthread_attr_destroy(&attributes);
    return call.status;
}

void expect_on_small_stack(const SampleCall& call) {
    for (int variant = 0; variant < 6; ++variant) {
        EXPECT_EQ(run_in_child(20,
                               [&] {
                                   int status = -1000;
                                   call.run(variant, on_small_stack, status);
                                   return status == SORVO_AUDIO_OK;
                               }),
                  "")
            << call.name << ' ' << variant;
    }
}

bool is_transform(const SampleCall& call) {
    return call.name == "FFT" || call.name == "IFFT";
}

TEST(SmallStack, SufficesForEveryCall) {
    for (const SampleCall& call : sample_calls()) {
        if (!is_transform(call)) {
            expect_on_small_stack(call);
        }
    }
}

/// Inputs and outputs that are large enough for whatever a routine does with many samples.
struct Buffers {
    std::vector<float> out = std::vector<float>(2000000);
    std::vector<float> in = std::vector<float>(200000, 0.5F);
    std::vector<float> taps = std::vector<float>(300, 0.01F);
    std::vector<float> one = {1.0F, -0.5F, 0.2F, -0.1F, 0.05F, -0.02F, 0.01F, 0.005F, 0.001F};
};

void expect_on_small_stack(int status, const std::string& name,
                           const std::function<int(float* out, const Buffers& b)>& call) {
    EXPECT_EQ(run_in_child(60,
                           [&] {
                               Buffers b;
                               return on_small_stack([&] { return call(b.out.data(), b); }) ==
                                      status;
                           }),
              "")
        << name;
}

TEST(SmallStack, SufficesForTransforms) {
    for (const SampleCall& call : sample_calls()) {
        if (is_transform(call)) {
            expect_on_small_stack(call);
        }
    }
    for (const int n : {211, 1000, 2048, 4096, 4097, 5041, 30030, 65536, 66000}) {
        expect_on_small_stack(0, "FFT " + std::to_string(n), [n](float* out, const Buffers& b) {
            return sorvoAudioFFT(out, b.in.data(), n);
        });
        expect_on_small_stack(0, "IFFT " + std::to_string(n), [n](float* out, const Buffers& b) {
            return sorvoAudioIFFT(out, b.in.data(), n);
        });
    }
}

TEST(SmallStack, SufficesForLongFrames) {
    for (const int n : {400, 2310, 4096, 8192}) {
        for (const float power : {0.0F, 1.0F, 0.7F}) {
            expect_on_small_stack(0, "GetSpectrogram " + std::to_string(n),
                                  [=](float* out, const Buffers& b) {
                                      return sorvoAudioGetSpectrogram(out, b.in.data(), 60000, n,
                                                                      1000, n, 1, 61, 1, power, 1);
                                  });
        }
        expect_on_small_stack(
            0, "GetMelSpectrogram " + std::to_string(n), [n](float* out, const Buffers& b) {
                return sorvoAudioGetMelSpectrogram(out, b.in.data(), 60000, 16000, n, 1000, n, 1,
                                                   61, 1, 2.0F, 0, 0.0F, 8000.0F, 80, 1, 0);
            });
        const int freq_n = n / 2 + 1;
        expect_on_small_stack(0, "GetInverseSpectrogram " + std::to_string(n),
                              [freq_n](float* out, const Buffers& b) {
                                  return sorvoAudioGetInverseSpectrogram(
                                      out, b.in.data(), 20, freq_n, 100, 2 * freq_n - 2, 1, 5000, 1,
                                      2);
                              });
    }
}

TEST(SmallStack, SufficesForManySamples) {
    for (int n = 2; n <= 9; ++n) {
        for (const int b_n : {n, 40, 300}) {
            const std::string shape = std::to_string(b_n) + '/' + std::to_string(n);
            expect_on_small_stack(0, "LinerFilter " + shape, [=](float* out, const Buffers& b) {
                return sorvoAudioLinerFilter(out, b.in.data(), b.taps.data(), b.one.data(), nullptr,
                                             200000, 200000, b_n, b_n == n ? n : 1, 0);
            });
            expect_on_small_stack(0, "FilterFilter " + shape, [=](float* out, const Buffers& b) {
                return sorvoAudioFilterFilter(out, b.in.data(), b.taps.data(), b.one.data(), 200000,
                                              200000, b_n, b_n == n ? n : 1, 1, 1000);
            });
        }
    }
    for (const int rate : {8000, 16000, 22050, 44100, 48000, 44101}) {
        expect_on_small_stack(
            0, "Resample to " + std::to_string(rate), [rate](float* out, const Buffers& b) {
                return sorvoAudioResample(out, b.in.data(), rate, 150000, 44100, 150000);
            });
    }
    expect_on_small_stack(0, "GetNonSilentPos", [](float* out, const Buffers& b) {
        auto* const at = reinterpret_cast<int*>(out);
        return sorvoAudioGetNonSilentPos(at, at + 1, b.in.data(), 200000, 2048, 512, 60.0F);
    });
    expect_on_small_stack(0, "MagPhase", [](float* out, const Buffers& b) {
        return sorvoAudioMagPhase(out, out + 100000, b.in.data(), 1000, 100, 0, 0.7F);
    });
    expect_on_small_stack(0, "ConvertToMel", [](float* out, const Buffers& b) {
        return sorvoAudioConvertToMel(out, b.in.data(), b.in.data(), 257, 300, 80);
    });
}

TEST(SmallStack, SufficesForARefusal) {
    expect_on_small_stack(SORVO_AUDIO_ERROR_ARGUMENT, "FFT", [](float* out, const Buffers& b) {
        return sorvoAudioFFT(out, b.in.data(), 0);
    });
}

}  // namespace
}  // namespace sorvo::audio::test
