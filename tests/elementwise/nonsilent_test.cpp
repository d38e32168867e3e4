#include "elementwise/nonsilent.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <vector>

#include "sorvo_audio.h"
#include "support/random.h"
#include "support/reference.h"
#include "util/exceptions.h"

namespace {

using namespace sorvo::test;

struct Span {
    int pos, len;
    bool operator==(const Span& other) const { return pos == other.pos && len == other.len; }
};

void PrintTo(const Span& span, std::ostream* out) {
    *out << span.pos << '+' << span.len;
}

/// What lies beside the signal is loud, so that reading it shows.
Span detect(const std::vector<float>& x, int win_n, int hop_n, float thr_db) {
    constexpr std::size_t margin = 50;
    std::vector<float> surrounded(x.size() + 2 * margin, 1e6F);
    std::copy(x.begin(), x.end(), surrounded.begin() + margin);
    Span span{-9, -9};
    EXPECT_EQ(sorvoAudioGetNonSilentPos(&span.pos, &span.len, surrounded.data() + margin,
                                        static_cast<int>(x.size()), win_n, hop_n, thr_db),
              SORVO_AUDIO_OK);
    return span;
}

/// From the definition: mean squares of frames of the padded signal, in dB below the loudest.
Span expected_span(const std::vector<float>& x, int win_n, int hop_n, float thr_db) {
    if (static_cast<int>(x.size()) < win_n) return {-1, 0};
    const auto padded =
        reference::padded(x, static_cast<std::size_t>(win_n), reference::Padding::reflect);
    std::vector<long double> levels;
    for (int centre = 0; centre <= static_cast<int>(x.size()); centre += hop_n) {
        long double energy = 0;
        for (int i = 0; i < win_n; ++i) {
            const long double v =
                padded.at(static_cast<std::size_t>(win_n + centre - win_n / 2 + i));
            energy += v * v;
        }
        levels.push_back(10 * std::log10(std::max(energy / win_n, 1e-10L)));
    }
    const long double top = *std::max_element(levels.begin(), levels.end());
    int first = -1;
    int last = -1;
    for (int t = 0; t < static_cast<int>(levels.size()); ++t) {
        if (levels[static_cast<std::size_t>(t)] - top > -static_cast<long double>(thr_db)) {
            first = first < 0 ? t : first;
            last = t;
        }
    }
    if (first < 0) return {-1, 0};
    return {first * hop_n,
            std::min(static_cast<int>(x.size()), (last + 1) * hop_n) - first * hop_n};
}

TEST(NonSilent, SpansTheLoudFrames) {
    Random random(10);
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<float> x = random.values(static_cast<std::size_t>(random.integer(1, 200)));
        for (float& value : x) value *= 1e-3F;
        const int bursts = random.integer(0, 2);
        for (int b = 0; b < bursts; ++b) {
            const int at = random.integer(0, static_cast<int>(x.size()) - 1);
            for (int i = at; i < std::min(at + 20, static_cast<int>(x.size())); ++i) {
                x[static_cast<std::size_t>(i)] *= 1000.0F;
            }
        }
        const int win_n = random.integer(1, 40);
        const int hop_n = random.integer(1, 30);
        const auto thr_db = static_cast<float>(random.integer(1, 70)) + 0.37F;
        EXPECT_EQ(detect(x, win_n, hop_n, thr_db), expected_span(x, win_n, hop_n, thr_db))
            << x.size() << " samples, window " << win_n << ", hop " << hop_n << ", " << thr_db
            << " dB";
    }
}

TEST(NonSilent, HasNoSpanWhereNothingStandsOut) {
    const std::vector<float> silence(100);
    EXPECT_EQ(detect(silence, 16, 8, 1.0F), (Span{0, 100}));  // all frames are equally loud
    EXPECT_EQ(detect(silence, 16, 30, 1.0F), (Span{0, 100}));
    EXPECT_EQ(detect(silence, 16, 8, 0.0F), (Span{-1, 0}));  // none is louder than the loudest
    EXPECT_EQ(detect(silence, 16, 8, std::nanf("")), (Span{-1, 0}));
    EXPECT_EQ(detect(silence, 101, 8, 60.0F), (Span{-1, 0}));  // no frame
    EXPECT_EQ(detect(silence, 16, 0, 60.0F), (Span{-1, 0}));
    // Energies below 1e-10 count as 1e-10: a whisper does not stand out of silence.
    std::vector<float> whisper(100);
    whisper[50] = 1e-5F;
    EXPECT_EQ(detect(whisper, 16, 8, 1.0F), (Span{0, 100}));
}

TEST(NonSilent, ChecksTheThresholdItselfToo) {
    int pos = 7;
    int len = 7;
    const float x = 1.0F;
    try {
        sorvo::audio::detect_nonsilent_pos(&pos, &len, &x, 1, 1, 1, -1.0F);
        ADD_FAILURE();
    } catch (const sorvo::audio::SorvoInvalidArgument& error) {
        EXPECT_STREQ(error.what(), "Invalid thr_db.");
    }
    EXPECT_EQ(pos, 7);
    EXPECT_EQ(len, 7);
}

}  // namespace
