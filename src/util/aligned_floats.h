#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace sorvo::audio {

/// Storage on the boundaries of cache lines, which are also those of the widest vectors.
template <class T>
struct CacheLineAllocator {
    using value_type = T;
    static constexpr std::align_val_t alignment{64};

    CacheLineAllocator() = default;
    template <class U>
    CacheLineAllocator(const CacheLineAllocator<U>& /*other*/) {}

    T* allocate(std::size_t n) {
        if (n > static_cast<std::size_t>(-1) / sizeof(T)) {
            throw std::bad_alloc();
        }
        return static_cast<T*>(::operator new(n * sizeof(T), alignment));
    }
    void deallocate(T* storage, std::size_t /*n*/) { ::operator delete(storage, alignment); }

    friend bool operator==(CacheLineAllocator /*a*/, CacheLineAllocator /*b*/) { return true; }
    friend bool operator!=(CacheLineAllocator /*a*/, CacheLineAllocator /*b*/) { return false; }
};

using AlignedFloats = std::vector<float, CacheLineAllocator<float>>;

}  // namespace sorvo::audio
