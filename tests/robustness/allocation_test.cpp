// Every allocation that a call makes fails once in turn. The status says so, and the next call
// gives the bits of a process in which nothing ever failed.
#include <gtest/gtest.h>
#include <sorvo_audio.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "robustness/child_process.h"
#include "robustness/sample_calls.h"

namespace {

// Allocations left until one fails; negative while none shall.
std::atomic<long> allocations_left{-1};

void* allocate(std::size_t bytes, std::size_t alignment) {
    if (allocations_left >= 0 && allocations_left-- == 0) {
        throw std::bad_alloc();
    }
    void* memory = nullptr;
    if (::posix_memalign(&memory, alignment, bytes == 0 ? 1 : bytes) != 0) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t bytes) {
    return allocate(bytes, alignof(std::max_align_t));
}
void* operator new[](std::size_t bytes) {
    return allocate(bytes, alignof(std::max_align_t));
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return allocate(bytes, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
    return allocate(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

namespace sorvo::audio::test {
namespace {

/// What the call did while allocation n failed.
struct Attempt {
    int status = 0;
    bool failed_an_allocation = false;
};

Attempt attempt(const SampleCall& call, long n) {
    Attempt result;
    call.run(
        0,
        [&](const std::function<int()>& work) {
            allocations_left = n;
            const int status = work();
            result.failed_an_allocation = allocations_left < 0;
            allocations_left = -1;
            return status;
        },
        result.status);
    return result;
}

/// Fails allocation 0, 1, 2, ... of the call, each in a process of its own that has made no call
/// before (cold) or this one (warm). Returns the number of allocations.
long fail_each_allocation(const SampleCall& call, bool warm) {
    // Computed in a process of its own too: this one must stay without any table.
    const std::size_t bytes = 1U << 20U;
    auto* const expected = static_cast<float*>(
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    EXPECT_EQ(run_in_child(20,
                           [&] {
                               const std::vector<float> out = outputs_of(call, 0);
                               std::memcpy(expected, out.data(), out.size() * sizeof(float));
                               return !::testing::Test::HasFailure();
                           }),
              "");
    long n = 0;
    for (bool reached = true; reached && n < 1000; ++n) {
        reached = run_in_child(20, [&] { return attempt(call, n).failed_an_allocation; }).empty();
        if (!reached && !warm) {
            break;
        }
        EXPECT_EQ(run_in_child(20,
                               [&] {
                                   if (warm) {
                                       outputs_of(call, 0);
                                   }
                                   const Attempt failed = attempt(call, n);
                                   const int wanted = failed.failed_an_allocation
                                                          ? SORVO_AUDIO_ERROR_MEMORY
                                                          : SORVO_AUDIO_OK;
                                   const std::vector<float> out = outputs_of(call, 0);
                                   return failed.status == wanted &&
                                          std::memcmp(expected, out.data(),
                                                      out.size() * sizeof(float)) == 0 &&
                                          !::testing::Test::HasFailure();
                               }),
                  "")
            << call.name << (warm ? ", warm" : ", cold") << ", allocation " << n;
    }
    ::munmap(expected, bytes);
    return n;
}

TEST(AllocationFailure, OfEveryAllocationOfEveryCallLeavesNoTrace) {
    long total = 0;
    for (const SampleCall& call : sample_calls()) {
        total += fail_each_allocation(call, false);
        fail_each_allocation(call, true);
    }
    EXPECT_GT(total, 100) << "hardly any allocation was made to fail";
}

/// A call that fails may be repeated, so it must not have touched what it would read again.
TEST(AllocationFailure, LeavesASignalFilteredInPlaceAndItsState) {
    const std::vector<std::vector<float>> numerators = {
        {0.2F, 0.3F}, {0.1F, 0.2F, 0.1F}, std::vector<float>(33, 0.03F), {0.1F, 0.2F, 0.3F, 0.4F}};
    for (const std::vector<float>& b : numerators) {
        std::vector<float> a(b.size(), 0.0F);
        a[0] = 1.0F;
        a[1] = b.size() > 4 ? 0.0F : -0.4F;
        const int coef_n = static_cast<int>(b.size());
        std::vector<float> state(b.size() - 1, 0.25F);
        std::vector<float> signal(300000);
        for (std::size_t i = 0; i < signal.size(); ++i) {
            signal[i] = static_cast<float>(i * 7919 % 1000) / 500.0F - 1.0F;
        }
        const int n = static_cast<int>(signal.size());
        const std::vector<float> signal_before = signal;
        const std::vector<float> state_before = state;
        for (const bool both_ways : {false, true}) {
            const auto call = [&] {
                return both_ways
                           ? sorvoAudioFilterFilter(signal.data(), signal.data(), b.data(),
                                                    a.data(), n, n, coef_n, coef_n,
                                                    SORVO_AUDIO_PAD_ODD, 99)
                           : sorvoAudioLinerFilter(signal.data(), signal.data(), b.data(), a.data(),
                                                   state.data(), n, n, coef_n, coef_n, coef_n - 1);
            };
            int status = SORVO_AUDIO_ERROR_MEMORY;
            for (long failing = 0; status != SORVO_AUDIO_OK; ++failing) {
                allocations_left = failing;
                status = call();
                allocations_left = -1;
                if (status != SORVO_AUDIO_OK) {
                    ASSERT_EQ(status, SORVO_AUDIO_ERROR_MEMORY);
                    ASSERT_EQ(signal, signal_before) << coef_n << " taps, allocation " << failing;
                    ASSERT_EQ(state, state_before) << coef_n << " taps, allocation " << failing;
                }
            }
            signal = signal_before;
            state = state_before;
        }
    }
}

}  // namespace
}  // namespace sorvo::audio::test
