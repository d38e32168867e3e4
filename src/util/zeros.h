#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace sorvo::audio {

/// A vector of n zeros. A count that no vector can hold is std::bad_alloc, as any other storage
/// that cannot be had; std::vector itself would report it as std::length_error, an internal
/// failure.
template <class T>
std::vector<T> make_zeros(std::uint64_t n) {
    std::vector<T> zeros;
    if (n > zeros.max_size()) {
        throw std::bad_alloc();
    }
    zeros.resize(static_cast<std::size_t>(n));
    return zeros;
}

}  // namespace sorvo::audio
