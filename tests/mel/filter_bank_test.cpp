#include "mel/filter_bank.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/reference.h"

namespace {

using namespace sorvo::test;

struct BankCase {
    int freq_n;
    float f_min, f_max;
    int mel_n, sample_rate;
};

class FilterBank : public testing::TestWithParam<BankCase> {};

TEST_P(FilterBank, MatchesTheDefinition) {
    const BankCase& c = GetParam();
    const auto freq_n = static_cast<std::size_t>(c.freq_n);
    const auto mel_n = static_cast<std::size_t>(c.mel_n);
    for (const int norm : {SORVO_AUDIO_MEL_NORM_NONE, SORVO_AUDIO_MEL_NORM_AREA}) {
        for (const int formula : {SORVO_AUDIO_MEL_SLANEY, SORVO_AUDIO_MEL_HTK}) {
            SCOPED_TRACE(testing::Message() << "norm " << norm << " formula " << formula);
            Guarded<float> bank(mel_n * freq_n);
            ASSERT_EQ(sorvoAudioGetFBMatrix(bank, c.freq_n, c.f_min, c.f_max, c.mel_n,
                                            c.sample_rate, norm, formula),
                      SORVO_AUDIO_OK);
            EXPECT_TRUE(bank.filled());
            const reference::Reals expected = reference::mel_bank(
                freq_n, c.f_min, c.f_max, mel_n, c.sample_rate, norm != 0, formula != 0);
            // Slopes of narrow triangles magnify the roundings of their corners: measured 1.2e-5.
            EXPECT_LT(relative_l2(bank.values(), expected), 2e-5);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Banks, FilterBank,
                         testing::Values(BankCase{257, 0.0F, 8000.0F, 80, 16000},
                                         BankCase{201, 20.0F, 7600.0F, 40, 16000},
                                         BankCase{1025, 0.0F, 11025.0F, 128, 22050},
                                         BankCase{513, 50.0F, 900.0F, 10, 44100},
                                         BankCase{129, 1200.0F, 3999.5F, 24, 8000},
                                         BankCase{65, 0.0F, 20000.0F, 64, 8000},
                                         BankCase{3, 0.0F, 3000.0F, 1, 8000},
                                         BankCase{9, 0.0F, 3500.0F, 8, 8000}),
                         [](const auto& bank) {
                             return "bins" + std::to_string(bank.param.freq_n) + "_bands" +
                                    std::to_string(bank.param.mel_n) + "_rate" +
                                    std::to_string(bank.param.sample_rate);
                         });

TEST(FilterBank, HasZeroWeightsWithTheRightSignAtItsEdges) {
    std::vector<std::vector<float>> rows(8, std::vector<float>(65));
    sorvo::audio::create_fb_matrix(rows, 65, 0.0F, 20000.0F, 8, 8000, 0, false);
    EXPECT_EQ(bits_of(rows[0][0]), 0x80000000U) << "a bin at the lower foot: minus the rising edge";
    EXPECT_EQ(bits_of(rows[7][0]), 0U) << "a bin below the triangle";
    EXPECT_EQ(rows[7], std::vector<float>(65)) << "a band above the Nyquist frequency";
}

TEST(FilterBank, GivesEveryTriangleTheAreaOne) {
    std::vector<std::vector<float>> rows(20, std::vector<float>(4001));
    sorvo::audio::create_fb_matrix(rows, 4001, 100.0F, 3900.0F, 20, 8000, 1, true);
    for (const std::vector<float>& row : rows) {  // bins are 1 Hz apart
        EXPECT_NEAR(std::accumulate(row.begin(), row.end(), 0.0), 1.0, 1e-3);
    }
}

}  // namespace
