#include "stft/framing.h"

#include <gtest/gtest.h>

#include <climits>

#include "sorvo_audio.h"

namespace {

using namespace sorvo::audio;

/// Frames by walking along the signal.
int count_frames(int sample_n, int fft_n, int hop_n, int center) {
    if (sample_n < fft_n) return 0;
    int count = 0;
    switch (center) {
        case SORVO_AUDIO_CENTER_NONE:  // frames that lie inside
            while (count * hop_n + fft_n <= sample_n) ++count;
            return count;
        case SORVO_AUDIO_CENTER_REFLECT:  // centres that lie inside or right behind the signal
            while (count * hop_n <= sample_n) ++count;
            return count;
        default:  // centres until one lies at or behind the end
            while (count * hop_n < sample_n) ++count;
            return count + 1;
    }
}

TEST(FrameLen, CountsFramesAlongTheSignal) {
    for (int sample_n = 1; sample_n <= 70; ++sample_n) {
        for (const int fft_n : {1, 2, 5, 16, 71}) {
            for (const int hop_n : {1, 2, 3, 4, 7, 16, 49, 100}) {
                for (const int center : {0, 1, 2}) {
                    int frame_n = -7;
                    ASSERT_EQ(sorvoAudioGetFrameLen(&frame_n, sample_n, fft_n, hop_n, center), 0);
                    ASSERT_EQ(frame_n, count_frames(sample_n, fft_n, hop_n, center))
                        << sample_n << ' ' << fft_n << ' ' << hop_n << ' ' << center;
                }
            }
        }
    }
}

TEST(FrameLen, RoundsAsFloatArithmeticDoes) {
    constexpr int two_24 = 1 << 24;
    const struct {
        int sample_n, fft_n, hop_n, center, expected;
    } cases[] = {
        {100, 16, 4, 0, 22},
        {100, 16, 4, 1, 26},
        {100, 16, 4, 2, 26},
        {101, 16, 4, 1, 26},
        {101, 16, 4, 2, 27},
        // 2^24 + 1 is not a float: it becomes 2^24, and so does 2^24 + 1 frames.
        {two_24 + 1, 1, 1, 0, two_24},
        {two_24 + 1, 1, 1, 1, two_24},
        {two_24 + 1, 1, 1, 2, two_24},
        // 2^24 + 3 becomes 2^24 + 4, a multiple of the hop: a frame that begins past the end.
        {two_24 + 3 + 8, 8, two_24 / 4 + 1, 0, 5},
        // What does not fit an int.
        {5, 2, 0, 0, INT_MIN},
        {5, 5, 0, 0, INT_MIN},
        {5, 2, 0, 1, INT_MIN},
        {5, 2, 0, 2, INT_MIN},
        {INT_MAX, 1, 1, 0, INT_MIN},
        {INT_MAX, 1, 1, 1, INT_MIN},
        {INT_MAX, 1, 1, 2, INT_MIN},
        {INT_MAX, 1, 2, 1, 1 << 30},
        {4, 5, 0, 1, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(get_frame_len(c.sample_n, c.fft_n, c.hop_n, c.center), c.expected)
            << c.sample_n << ' ' << c.fft_n << ' ' << c.hop_n << ' ' << c.center;
    }
}

}  // namespace
