// A product is rounded before it is added to a sum. The square of `factor` is 1 + 2^-11 + 2^-24, of
// which rounding drops the last term; a fused multiply-add would keep it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "mel/mel_conversion.h"
#include "sorvo_audio.h"

namespace {

constexpr float factor = 1.0F + 0x1p-12F;
constexpr float rounded_square = 1.0F + 0x1p-11F;

TEST(Contraction, WouldShowInTheseNumbers) {
    const float square = factor * factor;
    EXPECT_EQ(square, rounded_square);
    EXPECT_EQ(std::fma(factor, factor, -rounded_square), 0x1p-24F);
}

#if defined(__x86_64__)
[[gnu::target("fma"), gnu::noinline]] float multiply_and_add(float a, float b, float c) {
    return a * b + c;
}

// Compiled with the numeric flags of the library, for a processor that could fuse.
TEST(Contraction, IsOffInTheFlagsOfTheLibrary) {
    if (!__builtin_cpu_supports("fma")) GTEST_SKIP() << "this processor has no fused multiply-add";
    const volatile float opaque = factor;  // not known to the compiler
    EXPECT_EQ(multiply_and_add(opaque, opaque, -rounded_square), 0.0F);
}
#endif

TEST(Contraction, IsOffInTheLibrary) {
    constexpr std::size_t frame_n = 200;  // wide enough to reach whatever vector code there is
    std::vector<float> src(2 * frame_n, factor);
    std::fill_n(src.begin(), frame_n, 1.0F);
    const std::vector<float> fb = {-rounded_square, factor};
    std::vector<float> mel(frame_n, 7.0F);
    sorvo::audio::convert_freq_to_mel_2d(mel.data(), src.data(), fb.data(), 2, frame_n, 1);
    EXPECT_EQ(mel, std::vector<float>(frame_n));

    // The variance is the square minus the square: 0, where a fused one would be negative.
    const float x = factor;
    float y = 7.0F;
    ASSERT_EQ(sorvoAudioStandardize(&y, &x, 1), SORVO_AUDIO_OK);
    EXPECT_EQ(y, 0.0F);

    // The same in double: 1/3 * 3 is rounded to 1 before the state -1 is added.
    const std::vector<float> b = {1.0F, 0.0F};
    const std::vector<float> a = {3.0F, 0.0F};
    const float three = 3.0F;
    float state = -1.0F;
    ASSERT_EQ(sorvoAudioLinerFilter(&y, &three, b.data(), a.data(), &state, 1, 1, 2, 2, 1), 0);
    EXPECT_EQ(y, 0.0F);
}

}  // namespace
