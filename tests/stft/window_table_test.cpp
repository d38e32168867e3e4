#include "stft/window_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "sorvo_audio.h"
#include "stft/stft_core.h"
#include "support/compare.h"
#include "support/reference.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

TEST(WindowTable, HoldsPeriodicWindows) {
    for (int type : {SORVO_AUDIO_WINDOW_HANN, SORVO_AUDIO_WINDOW_HAMMING}) {
        for (const int n : {1, 2, 3, 4, 5, 16, 31, 400, 1024, 4001}) {
            SCOPED_TRACE(testing::Message() << "type " << type << " length " << n);
            const std::vector<float>& window = WindowTable::instance().ref_table(n, type);
            const reference::Reals expected = reference::window(static_cast<std::size_t>(n), type);
            ASSERT_EQ(window.size(), expected.size());
            for (std::size_t i = 0; i < window.size(); ++i) {
                // Half of what rounding an angle up to 2 pi loses (2.4e-7), and the roundings after
                // it.
                EXPECT_NEAR(window[i], static_cast<double>(expected[i]), 1.7e-7) << i;
            }
            std::vector<float> exported(window.size());
            ASSERT_EQ(sorvoAudioGetWindow(exported.data(), n, type), SORVO_AUDIO_OK);
            EXPECT_TRUE(same_bits(exported, window));
            EXPECT_EQ(&window, &WindowTable::instance().ref_table(n, type));
        }
    }
    EXPECT_TRUE(same_bits(WindowTable::instance().ref_table(4, 1),
                          std::vector<float>{0.0F, 0.5F, 1.0F, 0.5F}));
    EXPECT_NE(WindowTable::instance().ref_table(8, 1), WindowTable::instance().ref_table(8, 2));
}

// The window lies in the middle of the frame. With n - 1 samples in a frame of n, the weight 0 of
// the sample that is left over makes it the symmetric window of n.
TEST(ApplyWindow, CentresTheWindowInTheFrame) {
    for (const int frame_n : {1, 2, 7, 8}) {
        for (int win_n = 1; win_n <= 14; ++win_n) {
            SCOPED_TRACE(testing::Message() << "frame " << frame_n << " window " << win_n);
            std::vector<float> frame(static_cast<std::size_t>(frame_n), 1.0F);
            apply_window(frame, WindowTable::instance().ref_table(win_n, 2));
            const reference::Reals expected = reference::framed_window(
                static_cast<std::size_t>(frame_n), static_cast<std::size_t>(win_n), 2);
            for (std::size_t i = 0; i < frame.size(); ++i) {
                EXPECT_NEAR(frame[i], static_cast<double>(expected[i]), 1.7e-7) << i;
            }
        }
    }
    std::vector<float> symmetric(9, 1.0F);
    apply_window(symmetric, WindowTable::instance().ref_table(8, 1));
    for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(symmetric[i], symmetric[8 - i], 1e-7) << i;
}

}  // namespace
