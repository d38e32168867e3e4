#include "signals.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <random>

namespace sorvo::bench {

AlignedFloats aligned_floats(std::size_t n) {
    constexpr std::size_t line = 64;
    const std::size_t bytes = (n * sizeof(float) + line - 1) / line * line;
    auto* const p = static_cast<float*>(std::aligned_alloc(line, bytes));
    if (p == nullptr) throw std::bad_alloc();
    std::fill(p, p + bytes / sizeof(float), 0.0F);
    return AlignedFloats(p);
}

std::vector<float> make_signal(int sample_rate, double seconds) {
    std::vector<float> x(static_cast<std::size_t>(static_cast<double>(sample_rate) * seconds));
    std::mt19937 random(1);
    std::uniform_real_distribution<float> noise(-0.001F, 0.001F);
    const float turn = 6.2831853F / static_cast<float>(sample_rate);
    float phases[] = {0.0F, 0.0F, 0.0F};
    const float frequencies[] = {220.0F, 587.3F, 1318.5F};
    for (float& sample : x) {
        sample = noise(random);
        for (int i = 0; i < 3; ++i) {
            sample += 0.3F * std::sin(phases[i]);
            phases[i] = std::fmod(phases[i] + turn * frequencies[i], 6.2831853F);
        }
    }
    return x;
}

Filter order2_filter() {
    return {"order2",
            {0.0976310729F, 0.195262146F, 0.0976310729F},
            {1.0F, -0.942809042F, 0.333333333F}};
}

Filter order8_filter() {
    return {"order8",
            {0.000107911285F, 0.000863290278F, 0.00302151597F, 0.00604303194F, 0.00755378993F,
             0.00604303194F, 0.00302151597F, 0.000863290278F, 0.000107911285F},
            {1.0F, -3.98378427F, 7.53623411F, -8.59981506F, 6.40015406F, -3.15602526F, 1.00169658F,
             -0.186342478F, 0.0155076153F}};
}

Filter fir32_filter() {
    Filter filter{"fir32", std::vector<float>(32), {1.0F}};
    for (std::size_t i = 0; i < filter.b.size(); ++i) {
        const double x = static_cast<double>(i) - 15.5;
        const double window = 0.54 + 0.46 * std::cos(M_PI * x / 16.0);
        filter.b[i] = static_cast<float>(window * std::sin(0.25 * M_PI * x) / (M_PI * x));
    }
    return filter;
}

}  // namespace sorvo::bench
