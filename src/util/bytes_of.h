#pragma once

#include <cstddef>

namespace sorvo::audio {

template <class Vector>
std::size_t bytes_of(const Vector& values) {
    return values.size() * sizeof(values[0]);
}

}  // namespace sorvo::audio
