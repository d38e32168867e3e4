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

/// Signals of n samples: noise of all magnitudes, zeros of both signs, sparse and quantised values
/// (whose sums cancel to zeros), a burst in silence, and noise with one or several values that are
/// not finite.
inline std::vector<Signal> awkward_signals(std::size_t n) {
    using Limits = std::numeric_limits<float>;
    std::vector<float> mixed_zeros = noise(n, 1.0F, 2);
    std::vector<float> quantised = noise(n, 1.5F, 4);
    std::vector<float> impulses(n, -0.0F);
    std::vector<float> burst(n, 0.0F);
    std::vector<float> broken = noise(n, 1.0F, 3);
    for (std::size_t i = 0; i < n; ++i) {
        mixed_zeros[i] = i % 5 == 0 ? mixed_zeros[i] : i % 3 == 0 ? -0.0F : 0.0F;
        quantised[i] = static_cast<float>(static_cast<int>(quantised[i]));
        impulses[i] = i % 97 == 5 ? -1.0F : impulses[i];
        burst[i] = i >= n / 2 && i < n / 2 + 10 ? 1.0F : -0.0F;
        if (i % 1021 == 700) {
            broken[i] = i % 2 == 0 ? Limits::infinity() : Limits::quiet_NaN();
        }
    }
    std::vector<Signal> signals = {{"noise", noise(n)},
                                   {"zeros", std::vector<float>(n, 0.0F)},
                                   {"negative zeros", std::vector<float>(n, -0.0F)},
                                   {"constant", std::vector<float>(n, 0.25F)},
                                   {"mixed zeros", mixed_zeros},
                                   {"-1, 0 and 1", quantised},
                                   {"impulses", impulses},
                                   {"burst", burst},
                                   {"denormals", noise(n, 64 * Limits::denorm_min())},
                                   {"tiny", noise(n, 1e-22F)},
                                   {"large", noise(n, 1e14F)},
                                   {"huge", noise(n, Limits::max())},
                                   {"broken", broken}};
    for (const float special : {Limits::quiet_NaN(), Limits::infinity(), Limits::max()}) {
        std::vector<float> x = noise(n);
        x[2 * n / 3] = special;
        signals.push_back({"noise with one " + std::to_string(special), x});
    }
    return signals;
}

}  // namespace sorvo::test
