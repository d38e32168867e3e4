#include "elementwise/decibel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/random.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

std::vector<float> to_db(const std::vector<float>& x, float top_db) {
    std::vector<float> out(x.size());
    EXPECT_EQ(sorvoAudioConvertPowerToDB(out.data(), x.data(), static_cast<int>(x.size()), top_db),
              SORVO_AUDIO_OK);
    std::vector<float> in_place = x;
    sorvoAudioConvertPowerToDB(in_place.data(), in_place.data(), static_cast<int>(x.size()),
                               top_db);
    EXPECT_TRUE(same_bits(in_place, out));
    return out;
}

TEST(PowerToDb, IsRelativeToTheMaximumAndFloored) {
    Random random(6);
    std::vector<float> x = random.values(500);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::pow(10.0F, 8.0F * x[i]) - 1e-7F;
    const long double top = *std::max_element(x.begin(), x.end());
    for (const float top_db : {-1.0F, nan, 0.0F, 15.0F, 80.0F, 1000.0F}) {
        const std::vector<float> db = to_db(x, top_db);
        for (std::size_t i = 0; i < x.size(); ++i) {
            long double expected = 10 * std::log10(std::max<long double>(x[i], 1e-10L) / top);
            if (top_db >= 0.0F) expected = std::max<long double>(expected, -top_db);
            // Both logarithms were rounded in a range of up to 100 dB.
            EXPECT_NEAR(db[i], static_cast<double>(expected), 2.0e-5) << x[i];
        }
    }
}

TEST(PowerToDb, TreatsWhatHasNoLogarithmAsTheFloor) {
    EXPECT_EQ(to_db({0.0F, -3.0F, 1e-11F}, 80.0F), (std::vector<float>{0.0F, 0.0F, 0.0F}));
    EXPECT_EQ(to_db({1.0F, nan, 0.0F}, -1.0F), (std::vector<float>{0.0F, -100.0F, -100.0F}));
    EXPECT_EQ(to_db({1.0F, nan, 0.0F}, 15.0F), (std::vector<float>{0.0F, -15.0F, -15.0F}));
    // A NaN in front hides the maximum.
    EXPECT_EQ(to_db({nan, 1.0F}, -1.0F), (std::vector<float>{0.0F, 100.0F}));
    EXPECT_TRUE(same_bits(to_db({infinity, 1.0F}, -1.0F), std::vector<float>{nan, -infinity}));
    EXPECT_EQ(power_to_db(100.0F, 1.0F), 20.0F);
    EXPECT_TRUE(std::isnan(power_to_db(1.0F, -1.0F))) << "the reference is not clamped";
}

TEST(Log1p, IsAccurateNearZeroAndFar) {
    std::vector<float> x = {0.0F, -0.0F, 1e-30F, -1e-8F, 1e-40F, 1.0F, 1e30F, -0.999F};
    Random random(7);
    for (int i = 0; i < 500; ++i) x.push_back(std::pow(10.0F, 20.0F * random.value()));
    std::vector<float> y(x.size());
    ASSERT_EQ(sorvoAudioLog1p(y.data(), x.data(), static_cast<int>(x.size())), SORVO_AUDIO_OK);
    for (std::size_t i = 0; i < x.size(); ++i) {
        EXPECT_LE(ulp_error(y[i], std::log1p(static_cast<long double>(x[i]))), 1.0) << x[i];
        EXPECT_EQ(std::signbit(y[i]), std::signbit(x[i])) << x[i];
    }
    x = {-1.0F, -1.5F, infinity, nan};
    ASSERT_EQ(sorvoAudioLog1p(x.data(), x.data(), 4), SORVO_AUDIO_OK);
    EXPECT_TRUE(same_bits(x, std::vector<float>{-infinity, nan, infinity, nan}));
}

}  // namespace
