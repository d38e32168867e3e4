// Signals that bring out what a fast path might do differently.
#pragma once

#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace sorvo::audio::test {

struct NamedSignal {
    std::string name;
    std::vector<float> samples;
};

inline std::vector<float> noise(std::size_t n, float amplitude, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> uniform(-amplitude, amplitude);
    std::vector<float> samples(n);
    for (float& x : samples) {
        x = uniform(random);
    }
    return samples;
}

/// Noise of all magnitudes, silence of both signs, sparse and quantised signals (whose sums cancel
/// to zeros), and noise with one value that is not finite or nearly so.
inline std::vector<NamedSignal> telling_signals(std::size_t n) {
    std::vector<NamedSignal> signals = {{"noise", noise(n, 1.0F)},
                                        {"zeros", std::vector<float>(n, 0.0F)},
                                        {"negative zeros", std::vector<float>(n, -0.0F)},
                                        {"constant", std::vector<float>(n, 0.25F)},
                                        {"denormal", noise(n, 1e-39F)},
                                        {"tiny", noise(n, 1e-22F)},
                                        {"huge", noise(n, 1e36F)},
                                        {"large", noise(n, 1e14F)}};
    std::vector<float> mixed_zeros = noise(n, 1.0F);
    std::vector<float> coarse = noise(n, 1.5F);
    std::vector<float> impulses(n, -0.0F);
    for (std::size_t i = 0; i < n; ++i) {
        mixed_zeros[i] = mixed_zeros[i] > 0.0F ? 0.0F : -0.0F;
        coarse[i] = static_cast<float>(static_cast<int>(coarse[i]));
        impulses[i] = i % 97 == 5 ? -1.0F : impulses[i];
    }
    signals.push_back({"zeros of both signs", mixed_zeros});
    signals.push_back({"-1, 0 and 1", coarse});
    signals.push_back({"impulses", impulses});
    for (const float special :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          std::numeric_limits<float>::max()}) {
        std::vector<float> samples = noise(n, 1.0F);
        samples[2 * n / 3] = special;
        signals.push_back({"noise with one " + std::to_string(special), samples});
    }
    return signals;
}

}  // namespace sorvo::audio::test
