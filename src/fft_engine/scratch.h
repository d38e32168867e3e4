#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace sorvo::audio::kelpon::fft {

/// Storage on the boundaries of cache lines, which are also those of the widest vectors.
template <class T>
struct CacheLineAllocator {
    using value_type = T;
    static constexpr std::align_val_t alignment{64};

    CacheLineAllocator() = default;
    template <class U>
    CacheLineAllocator(const CacheLineAllocator<U>& /*other*/) {}

    T* allocate(std::size_t n) {
        if (n > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_alloc();
        return static_cast<T*>(::operator new(n * sizeof(T), alignment));
    }
    void deallocate(T* storage, std::size_t /*n*/) { ::operator delete(storage, alignment); }

    friend bool operator==(CacheLineAllocator /*a*/, CacheLineAllocator /*b*/) { return true; }
    friend bool operator!=(CacheLineAllocator /*a*/, CacheLineAllocator /*b*/) { return false; }
};

using AlignedFloats = std::vector<float, CacheLineAllocator<float>>;

/// Working storage of the calling thread, at least float_n floats of any content. It stays valid
/// until the thread asks again and is freed with the thread.
float* thread_scratch(std::size_t float_n);

}  // namespace sorvo::audio::kelpon::fft
