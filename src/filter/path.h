#pragma once

#include <cstddef>

namespace sorvo::audio {

/// n samples in the order in which a filter takes them: as they lie, or from the last to the first.
/// `data` may begin at `origin` of a longer signal, by whose positions the samples are then named.
template <class T>
struct Path {
    T* data;
    std::size_t n;
    bool reverse;
    std::size_t origin = 0;

    /// The lowest address of the samples `position` to `position + count - 1`.
    T* range(std::size_t position, std::size_t count) const {
        return data + (reverse ? n - (position - origin) - count : position - origin);
    }

    Path part(std::size_t position, std::size_t count) const {
        return {range(position, count), count, reverse};
    }
};

}  // namespace sorvo::audio
