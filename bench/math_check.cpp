// Compares the functions in lanes with those of the C library at hand, for every float or, of two
// arguments, a billion pairs: in how many results the form in use differs at each level of the
// processor, and the other form at the highest. Takes ten minutes. run_math_check runs it beside
// two C libraries.
//
//   math_check [log10f] [log1pf] [atan2f] [sincosf] [powf]
#include <gnu/libc-version.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "math/function_kernels.h"
#include "math/stepped_powf.h"

using namespace sorvo::audio;

namespace {

constexpr std::size_t chunk_n = 1U << 16;
constexpr std::uint64_t float_n = std::uint64_t{1} << 32;

std::uint32_t bits_of(float x) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

float float_of(std::uint32_t bits) {
    float x = 0.0F;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

/// A kernel to be compared, of one level and form.
struct Candidate {
    std::string name;
    FunctionKernels::Kernel kernel;
    std::uint64_t different_n = 0;
};

using Member = FunctionKernels::Kernel (FunctionKernels::*)[2];

const char* name_of(MathForm form) {
    return form == MathForm::rounded ? "rounded" : form == MathForm::classic ? "classic" : "called";
}

std::vector<Candidate> candidates(Member member, MathForm used) {
    std::vector<Candidate> result;
    for (const SimdLevel level : all_simd_levels()) {
        for (const MathForm form : {MathForm::rounded, MathForm::classic}) {
            if (is_supported(level) && (form == used || level == simd_level())) {
                result.push_back({std::string(simd_level_name(level)) + " " + name_of(form),
                                  in_form(function_kernels(level).*member, form)});
            }
        }
    }
    return result;
}

/// Numbers of floats that an argument and a result consist of.
struct Shape {
    std::size_t src_n;
    std::size_t dst_n;
};

/// Compares for the arguments and expected results with which fill() fills one chunk after the
/// other, until it returns false.
template <class Fill>
void compare(const char* function, Shape shape, std::vector<Candidate> all, Fill fill) {
    std::vector<float> src(shape.src_n * chunk_n);
    std::vector<float> expected(shape.dst_n * chunk_n);
    std::vector<float> got(expected.size());
    std::uint64_t argument_n = 0;
    while (fill(src, expected)) {
        argument_n += chunk_n;
        for (Candidate& candidate : all) {
            candidate.kernel(got.data(), src.data(), chunk_n);
            if (std::memcmp(got.data(), expected.data(), got.size() * sizeof(float)) == 0) continue;
            for (std::size_t i = 0; i < expected.size(); ++i) {
                const bool same = bits_of(got[i]) == bits_of(expected[i]) ||
                                  (std::isnan(got[i]) && std::isnan(expected[i]));
                candidate.different_n += same ? 0U : 1U;
            }
        }
    }
    for (const Candidate& candidate : all) {
        std::printf("%-8s %-16s %12llu of %llu results differ\n", function, candidate.name.c_str(),
                    static_cast<unsigned long long>(candidate.different_n),
                    static_cast<unsigned long long>(argument_n * shape.dst_n));
    }
    std::fflush(stdout);
}

/// The same for every float.
template <class Function>
void compare_floats(const char* function, std::vector<Candidate> all, Function f) {
    std::uint64_t next = 0;
    compare(function, {1, 1}, std::move(all), [&](auto& src, auto& expected) {
        if (next == float_n) return false;
        for (std::size_t i = 0; i < chunk_n; ++i, ++next) {
            src[i] = float_of(static_cast<std::uint32_t>(next));
            expected[i] = f(src[i]);
        }
        return true;
    });
}

void check_log10f() {
    compare_floats("log10f", candidates(&FunctionKernels::log10f, log10f_form()),
                   [](float x) { return ::log10f(x); });
}

void check_log1pf() {
    compare_floats("log1pf", candidates(&FunctionKernels::log1pf, log1pf_form()),
                   [](float x) { return ::log1pf(x); });
}

/// Half of the pairs are any bits; the magnitudes of the other half are not more than 2^12 apart.
void check_atan2f() {
    constexpr std::uint64_t pair_n = 1'000'000'000;
    std::mt19937_64 random(1);
    std::uint64_t next = 0;
    const auto all = candidates(&FunctionKernels::angles, atan2f_form());
    compare("atan2f", {2, 1}, all, [&](auto& z, auto& expected) {
        for (std::size_t i = 0; i < chunk_n; ++i) {
            const std::uint64_t bits = random();
            auto re = static_cast<std::uint32_t>(bits);
            auto im = static_cast<std::uint32_t>(bits >> 32);
            if (i % 2 == 0) {
                re = (re & 0x83FFFFFFU) + 0x3C000000U;
                im = (im & 0x83FFFFFFU) + 0x3C000000U;
            }
            z[2 * i] = float_of(re);
            z[2 * i + 1] = float_of(im);
            expected[i] = ::atan2f(z[2 * i + 1], z[2 * i]);
        }
        next += chunk_n;
        return next <= pair_n;
    });
}

/// For every float below 16 in magnitude.
void check_sincosf() {
    const std::uint32_t bound = bits_of(16.0F);
    std::vector<Candidate> all;
    for (const SimdLevel level : all_simd_levels()) {
        if (is_supported(level)) {
            all.push_back({simd_level_name(level), function_kernels(level).unit_numbers});
        }
    }
    std::uint64_t next = 0;
    compare("sincosf", {1, 2}, std::move(all), [&](auto& src, auto& expected) {
        if (next == 2 * std::uint64_t{bound}) return false;
        for (std::size_t i = 0; i < chunk_n; ++i, ++next) {
            const auto bits = static_cast<std::uint32_t>(next / 2);
            src[i] = float_of(bits | (next % 2 != 0 ? 0x80000000U : 0U));
            expected[2 * i] = ::cosf(src[i]);
            expected[2 * i + 1] = ::sinf(src[i]);
        }
        return true;
    });
}

/// The steps of powf() with SORVO_AUDIO_MATH=own: square roots of every float, and other powers.
void check_powf() {
    std::uint64_t root_n = 0;
    for (std::uint64_t next = 0; next < float_n; ++next) {
        const float x = float_of(static_cast<std::uint32_t>(next));
        const float expected = ::powf(x, 0.5F);
        const float got = stepped_powf(x, 0.5F);
        root_n += bits_of(got) == bits_of(expected) || std::isnan(expected) ? 0U : 1U;
    }
    constexpr std::uint64_t pair_n = 1'000'000'000;
    std::uint64_t power_n = 0;
    std::mt19937_64 random(1);
    for (std::uint64_t i = 0; i < pair_n; ++i) {
        const std::uint64_t bits = random();
        const float x = float_of((static_cast<std::uint32_t>(bits) & 0x0FFFFFFFU) + 0x38000000U);
        const float y =
            float_of((static_cast<std::uint32_t>(bits >> 32) & 0x01FFFFFFU) + 0x3E800000U);
        power_n += bits_of(stepped_powf(x, y)) == bits_of(::powf(x, y)) ? 0U : 1U;
    }
    std::printf(
        "powf     stepped          %12llu of %llu square roots, %llu of %llu powers differ\n",
        static_cast<unsigned long long>(root_n), static_cast<unsigned long long>(float_n),
        static_cast<unsigned long long>(power_n), static_cast<unsigned long long>(pair_n));
}

}  // namespace

int main(int argc, char** argv) {
    std::printf("C library %s\n", gnu_get_libc_version());
    const std::vector<std::string> wanted(argv + 1, argv + argc);
    const auto run = [&wanted](const char* function, void (*check)()) {
        if (wanted.empty() || std::find(wanted.begin(), wanted.end(), function) != wanted.end()) {
            check();
        }
    };
    run("log10f", check_log10f);
    run("log1pf", check_log1pf);
    run("atan2f", check_atan2f);
    run("sincosf", check_sincosf);
    run("powf", check_powf);
    return 0;
}
