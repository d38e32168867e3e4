// Signals that bring out what a fast path could get wrong.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "support/random.h"

namespace sorvo::test {

inline std::vector<float> noise(std::size_t n, float scale = 1.0F, unsigned seed = 1) {
    std::vector<float> x = Random(seed).values(n);
    for (float& value : x) value *= scale;
    return x;
}

struct Signal {
    std::string name;
    std::vector<float> x;
};

/// Signals of n samples: ordinary, zeros of both signs, denormals, huge values, a burst in silence,
/// and one with rare infinities and NaN.
inline std::vector<Signal> awkward_signals(std::size_t n) {
    using Limits = std::numeric_limits<float>;
    std::vector<float> negative_zeros(n, -0.0F);
    std::vector<float> mixed_zeros = noise(n, 1.0F, 2);
    std::vector<float> burst(n, 0.0F);
    std::vector<float> broken = noise(n, 1.0F, 3);
    for (std::size_t i = 0; i < n; ++i) {
        mixed_zeros[i] = i % 5 == 0 ? mixed_zeros[i] : i % 3 == 0 ? -0.0F : 0.0F;
        burst[i] = i >= n / 2 && i < n / 2 + 10 ? 1.0F : -0.0F;
        if (i % 1021 == 700) {
            broken[i] = i % 2 == 0 ? Limits::infinity() : Limits::quiet_NaN();
        }
    }
    return {{"noise", noise(n)},
            {"negative zeros", negative_zeros},
            {"mixed zeros", mixed_zeros},
            {"denormals", noise(n, 64 * Limits::denorm_min())},
            {"huge", noise(n, Limits::max())},
            {"burst", burst},
            {"broken", broken}};
}

}  // namespace sorvo::test
