#include "math/form.h"

#if !defined(SORVO_AUDIO_OWN_MATH)

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "math/called.h"
#include "math/function_kernels.h"
#include "util/float_mode.h"

#endif

namespace sorvo::audio {

#if defined(SORVO_AUDIO_OWN_MATH)

MathForm log10f_form() {
    return MathForm::rounded;
}

MathForm log1pf_form() {
    return MathForm::rounded;
}

MathForm atan2f_form() {
    return MathForm::rounded;
}

MathForm sincosf_form() {
    return MathForm::classic;
}

#else

namespace {

using Kernel = FunctionKernels::Kernel;

float float_of(std::uint32_t bits) {
    float x = 0.0F;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

/// Zeros by their sign, any NaN as any other.
bool same(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

/// Whether a kernel gives what the C library gives, for some thousand arguments of src_n floats
/// which argument() makes of random bits. A result has dst_n floats.
template <std::size_t dst_n, std::size_t src_n, class Argument>
[[gnu::noinline]] bool agrees(Kernel kernel, Kernel called, Argument argument) {
    constexpr std::size_t chunk_n = 128;
    std::array<float, src_n * chunk_n> src;
    std::array<float, dst_n * chunk_n> got;
    std::array<float, dst_n * chunk_n> expected;
    std::uint32_t bits = 1;
    for (int chunk = 0; chunk < 32; ++chunk) {
        for (float& x : src) {
            bits ^= bits << 13;  // George Marsaglia's xorshift
            bits ^= bits >> 17;
            bits ^= bits << 5;
            x = argument(bits);
        }
        kernel(got.data(), src.data(), chunk_n);
        called(expected.data(), src.data(), chunk_n);
        if (!std::equal(got.begin(), got.end(), expected.begin(), same)) {
            return false;
        }
    }
    return true;
}

/// The form, chosen on the first request. It depends on nothing that changes: threads that choose
/// at the same time choose alike.
class Choice {
  public:
    template <class Choose>
    MathForm form(Choose choose) {
        int form = form_.load(std::memory_order_relaxed);
        if (form == unknown) {
            const DefaultFloatMode mode;
            form = static_cast<int>(choose());
            form_.store(form, std::memory_order_relaxed);
        }
        return static_cast<MathForm>(form);
    }

  private:
    static constexpr int unknown = -1;
    std::atomic<int> form_{unknown};
};

template <std::size_t dst_n, std::size_t src_n, class Argument>
MathForm choose(const Kernel (&kernels)[2], Kernel called, Argument argument) {
    for (const MathForm form : {MathForm::rounded, MathForm::classic}) {
        if (agrees<dst_n, src_n>(in_form(kernels, form), called, argument)) {
            return form;
        }
    }
    return MathForm::called;
}

const FunctionKernels& kernels() {
    return function_kernels(simd_level());
}

// Half of the arguments are any floats, the others those that are common.

float any_or_below_4(std::uint32_t bits) {
    return float_of(bits % 2 == 0 ? bits : (bits & 0x83FFFFFFU) + 0x3C800000U);
}

float any_or_near_one(std::uint32_t bits) {
    return float_of(bits % 2 == 0 ? bits & 0x7FFFFFFFU : (bits & 0x00FFFFFFU) + 0x3F000000U);
}

float below_4(std::uint32_t bits) {
    return float_of((bits & 0x80000000U) | (bits & 0x7FFFFFFFU) % 0x40800000U);
}

}  // namespace

MathForm log10f_form() {
    static Choice choice;
    return choice.form([] { return choose<1, 1>(kernels().log10f, call_log10f, any_or_near_one); });
}

MathForm log1pf_form() {
    static Choice choice;
    return choice.form([] { return choose<1, 1>(kernels().log1pf, call_log1pf, any_or_below_4); });
}

MathForm atan2f_form() {
    static Choice choice;
    return choice.form([] { return choose<1, 2>(kernels().angles, call_atan2f, any_or_below_4); });
}

MathForm sincosf_form() {
    static Choice choice;
    return choice.form([] {
        return agrees<2, 1>(kernels().unit_numbers, call_cexpf, below_4) ? MathForm::classic
                                                                         : MathForm::called;
    });
}

#endif

}  // namespace sorvo::audio
