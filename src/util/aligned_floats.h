#pragma once

#include <cstdint>
#include <vector>

#include "util/zeros.h"

namespace sorvo::audio {

/// Working storage of zeros that starts at a cache line.
class AlignedFloats {
  public:
    explicit AlignedFloats(std::uint64_t n = 0) : storage_(make_zeros<float>(n + line)) {}

    float* data() {
        const auto address = reinterpret_cast<std::uintptr_t>(storage_.data());
        return storage_.data() + (line - address / sizeof(float) % line) % line;
    }

  private:
    static constexpr std::uint64_t line = 16;  // floats
    std::vector<float> storage_;
};

}  // namespace sorvo::audio
