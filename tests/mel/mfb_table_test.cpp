#include "mel/mfb_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "mel/filter_bank.h"
#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/random.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

using Bank = std::vector<std::vector<float>>;

const Bank& ref(const MelFilterBankParam& key) {
    return MFBTable::instance().ref_table(key.freq_n, key.f_min, key.f_max, key.mel_n,
                                          key.sample_rate, key.mel_norm, key.htk);
}

TEST(MfbTable, KeepsBanksApartByEveryField) {
    const MelFilterBankParam base{17, 10.0F, 3000.0F, 5, 8000, 0, false};
    std::vector<MelFilterBankParam> keys(8, base);
    keys[1].htk = true;
    keys[2].mel_norm = 1;
    keys[3].sample_rate = 8001;
    keys[4].mel_n = 6;
    keys[5].f_max = 3001.0F;
    keys[6].f_min = 11.0F;
    keys[7].freq_n = 18;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(&ref(keys[i]), &ref(keys[i]));
        for (std::size_t j = 0; j < keys.size(); ++j) {
            EXPECT_EQ(&ref(keys[i]) == &ref(keys[j]), i == j) << i << ' ' << j;
            // Every later key differs in a more significant field and is greater.
            EXPECT_EQ(keys[i] < keys[j], i < j) << i << ' ' << j;
        }
    }
    MelFilterBankParam conflicting = keys[7];  // a greater first field outweighs lesser later ones
    conflicting.f_min = 0.0F;
    EXPECT_TRUE(base < conflicting);
    EXPECT_FALSE(conflicting < base);
}

// A NaN bound orders nothing, so it could make a map lose or confuse its entries.
TEST(MfbTable, IsNotDisturbedByNanBounds) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Random random(11);
    const auto random_key = [&](bool with_nan) {
        const float low = static_cast<float>(random.integer(0, 40));
        const float high = 100.0F + static_cast<float>(random.integer(0, 40));
        const int which = with_nan ? random.integer(1, 3) : 0;
        return MelFilterBankParam{random.integer(4, 6),
                                  (which & 1) != 0 ? nan : low,
                                  (which & 2) != 0 ? nan : high,
                                  random.integer(1, 3),
                                  300,
                                  random.integer(0, 1),
                                  random.integer(0, 1) == 1};
    };
    for (int round = 0; round < 3000; ++round) {
        const MelFilterBankParam key = random_key(round % 3 == 0);
        const auto freq_n = static_cast<std::size_t>(key.freq_n);
        std::vector<float> bank(static_cast<std::size_t>(key.mel_n) * freq_n);
        ASSERT_EQ(sorvoAudioGetFBMatrix(bank.data(), key.freq_n, key.f_min, key.f_max, key.mel_n,
                                        key.sample_rate, key.mel_norm, key.htk ? 1 : 0),
                  SORVO_AUDIO_OK);
        Bank fresh(static_cast<std::size_t>(key.mel_n), std::vector<float>(freq_n));
        create_fb_matrix(fresh, key.freq_n, key.f_min, key.f_max, key.mel_n, key.sample_rate,
                         key.mel_norm, key.htk);
        std::vector<float> flat;
        for (const auto& row : fresh) flat.insert(flat.end(), row.begin(), row.end());
        ASSERT_TRUE(same_bits(bank, flat)) << "round " << round;
        ASSERT_EQ(std::isnan(flat[0]), std::isnan(key.f_min) || std::isnan(key.f_max));
    }
}

}  // namespace
