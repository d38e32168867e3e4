#include "util/scratch.h"

#include <array>
#include <atomic>
#include <new>

namespace sorvo::audio {
namespace {

constexpr std::size_t kept_n = 16384;  // floats of a kept buffer

/// Buffers that nobody uses; they stay until the process ends.
std::array<std::atomic<float*>, 4> kept_buffers{};

constexpr std::align_val_t cache_line{64};

float* allocate(std::size_t float_n) {
    if (float_n > static_cast<std::size_t>(-1) / sizeof(float)) {
        throw std::bad_alloc();
    }
    return static_cast<float*>(::operator new(float_n * sizeof(float), cache_line));
}

float* take_kept() {
    for (std::atomic<float*>& kept : kept_buffers) {
        if (float* const buffer = kept.exchange(nullptr, std::memory_order_acquire)) {
            return buffer;
        }
    }
    return allocate(kept_n);
}

}  // namespace

Scratch::Scratch(std::size_t float_n)
    : data_(float_n <= kept_n ? take_kept() : allocate(float_n)), kept_(float_n <= kept_n) {}

Scratch::~Scratch() {
    for (std::size_t i = 0; kept_ && i < kept_buffers.size(); ++i) {
        float* nothing = nullptr;
        if (kept_buffers[i].compare_exchange_strong(nothing, data_, std::memory_order_release,
                                                    std::memory_order_relaxed)) {
            return;
        }
    }
    ::operator delete(data_, cache_line);
}

}  // namespace sorvo::audio
