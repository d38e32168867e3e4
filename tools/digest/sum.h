// What digests are made of: a sum over numbers, each mixed with its position.
#pragma once

#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace sorvo_tool {

// The finaliser of SplitMix64.
inline std::uint64_t mix(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15U;
    x = (x ^ (x >> 30U)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27U)) * 0x94D049BB133111EBU;
    return x ^ (x >> 31U);
}

class Sum {
  public:
    void add(std::uint32_t bits) { sum_ += mix(position_++ << 32U | bits); }

    // All NaN are one value: their sign and payload are the processor's own.
    void add(float value) {
        std::uint32_t bits = 0x7FC00000U;
        if (!std::isnan(value)) std::memcpy(&bits, &value, sizeof(bits));
        add(bits);
    }

    std::uint64_t value() const { return sum_; }

  private:
    std::uint64_t position_ = 0;
    std::uint64_t sum_ = 0;
};

inline std::string digits_of(const Sum& sum) {
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016" PRIx64, sum.value());
    return digits.data();
}

}  // namespace sorvo_tool
