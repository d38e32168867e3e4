#include "elementwise/power.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace sorvo::audio {
namespace {

constexpr std::size_t block_n = 32;

/// powf(x, 0.5F) is the correctly rounded root save where the root lies within 0.0016 units in the
/// last place of the midpoint of two floats. Near a midpoint the remainder e = x - s s of the
/// rounded root s is close to s ulp(s), its bound. Writes the roots and whether the library must
/// decide: from 0.99 of that bound on (1 % of all values) and for values so small that e could
/// underflow, negative zero among them.
[[gnu::always_inline]] inline void root_block(float* root, std::uint32_t* undecided,
                                              const float* x) {
    for (std::size_t i = 0; i < block_n; ++i) {
        const float s = ::sqrtf(x[i]);
        const auto bits = __builtin_bit_cast(std::uint32_t, s);
        const auto high = __builtin_bit_cast(float, bits & 0xFFFFF000U);
        const float low = s - high;
        // high is half of the bits of s: its square is exact, and so is the first difference.
        const float e = ((x[i] - high * high) - 2.0F * high * low) - low * low;
        const auto binade = __builtin_bit_cast(float, bits & 0x7F800000U);
        constexpr float ulp_part = 0.99F * 0x1p-23F;
        root[i] = s;
        undecided[i] =
            static_cast<std::uint32_t>(::fabsf(e) > binade * s * ulp_part) |
            (static_cast<std::uint32_t>(x[i] < 1e-30F) & static_cast<std::uint32_t>(bits != 0));
    }
}

[[gnu::always_inline]] inline void roots(float* dst, const float* src, std::size_t n) {
    alignas(64) std::array<float, block_n> x{};
    alignas(64) std::array<float, block_n> root;
    alignas(64) std::array<std::uint32_t, block_n> undecided;
    for (std::size_t begin = 0; begin < n; begin += block_n) {
        const std::size_t count = std::min(block_n, n - begin);
        std::copy_n(src + begin, count, x.data());
        root_block(root.data(), undecided.data(), x.data());
        std::uint32_t any = 0;
        for (std::size_t i = 0; i < block_n; ++i) {
            any |= undecided[i];
        }
        if (any != 0) {
            for (std::size_t i = 0; i < count; ++i) {
                if (undecided[i] != 0) {
                    root[i] = ::powf(x[i], 0.5F);
                }
            }
        }
        std::copy_n(root.data(), count, dst + begin);
    }
}

void roots_baseline(float* dst, const float* src, std::size_t n) {
    roots(dst, src, n);
}

[[gnu::target("avx2")]] void roots_avx2(float* dst, const float* src, std::size_t n) {
    roots(dst, src, n);
}

[[gnu::target("avx512f,avx512bw,avx512dq,avx512vl")]] void roots_avx512(float* dst,
                                                                        const float* src,
                                                                        std::size_t n) {
    roots(dst, src, n);
}

constexpr std::array<decltype(&roots_baseline), all_cpu_levels.size()> roots_by_level = {
    roots_baseline, roots_avx2, roots_avx512};

}  // namespace

void raise_to_power(float* dst, const float* src, std::size_t n, float exponent, CpuLevel level) {
    if (exponent == 1.0F) {
        std::copy_n(src, dst == src ? 0 : n, dst);
    } else if (exponent == 0.5F) {
        roots_by_level[static_cast<std::size_t>(level)](dst, src, n);
    } else if (exponent == 0.0F) {
        std::fill_n(dst, n, 1.0F);
    } else {
        std::transform(src, src + n, dst, [exponent](float x) { return ::powf(x, exponent); });
    }
}

}  // namespace sorvo::audio
