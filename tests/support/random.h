// Random signals. The source prints its seed with every failure in its scope.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace sorvo::test {

class Random {
  public:
    explicit Random(unsigned seed)
        : engine_(seed), trace_(__FILE__, __LINE__, "seed " + std::to_string(seed)) {}

    /// Uniform in -1 ... 1, the same on every standard library.
    float value() { return static_cast<float>(engine_() >> 8) / 8388608.0F - 1.0F; }

    std::vector<float> values(std::size_t n) {
        std::vector<float> result(n);
        for (float& x : result) x = value();
        return result;
    }

    /// Uniform in first ... last.
    int integer(int first, int last) {
        return first + static_cast<int>(engine_() % static_cast<unsigned>(last - first + 1));
    }

  private:
    std::mt19937 engine_;
    testing::ScopedTrace trace_;
};

}  // namespace sorvo::test
