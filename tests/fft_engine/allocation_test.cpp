// Counts the allocations of the calling thread by replacing the program's allocation functions.
#include <gtest/gtest.h>

#include <complex>
#include <cstdlib>
#include <new>
#include <thread>
#include <vector>

#include "fft_engine/fft.h"

namespace {

thread_local int allocation_n = 0;

void* allocate(std::size_t size, std::size_t alignment) {
    ++allocation_n;
    void* const storage = std::aligned_alloc(alignment, (size + alignment - 1) & ~(alignment - 1));
    if (storage == nullptr) throw std::bad_alloc();
    return storage;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* storage) noexcept {
    std::free(storage);
}
void operator delete(void* storage, std::size_t) noexcept {
    std::free(storage);
}
void operator delete(void* storage, std::align_val_t) noexcept {
    std::free(storage);
}
void operator delete(void* storage, std::size_t, std::align_val_t) noexcept {
    std::free(storage);
}

namespace {

using namespace sorvo::audio::kelpon;

TEST(Allocation, HappensOnlyInTheFirstExecutionOfAThread) {
    for (const unsigned n : {4U, 30U, 1009U, 1024U, 2018U}) {
        for (int algorithm = 1; algorithm <= 4; ++algorithm) {
            const FFT plan(n, algorithm % 2 == 0, static_cast<fft::FFTAlgorithm>(algorithm));
            std::vector<std::complex<float>> values(n, {0.5F, 0.25F});
            int first = -1;
            int second = -1;
            std::thread([&] {
                const int before = allocation_n;
                plan.exec(values.data(), values.data());
                first = allocation_n - before;
                plan.exec(values.data(), values.data());
                second = allocation_n - before - first;
            }).join();
            EXPECT_LE(first, 1) << n << ' ' << algorithm;
            EXPECT_EQ(second, 0) << n << ' ' << algorithm;
        }
    }
}

}  // namespace
