#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/random.h"

namespace {

using namespace sorvo::test;

std::vector<float> standardized(std::vector<float> x) {
    std::vector<float> separate(x.size());
    EXPECT_EQ(sorvoAudioStandardize(separate.data(), x.data(), static_cast<int>(x.size())), 0);
    EXPECT_EQ(sorvoAudioStandardize(x.data(), x.data(), static_cast<int>(x.size())), 0);
    EXPECT_TRUE(same_bits(x, separate)) << "in place";
    return x;
}

TEST(Standardize, GivesZeroMeanAndUnitVariance) {
    Random random(8);
    for (const std::size_t n : {2U, 3U, 10U, 1000U, 20000U}) {
        for (const float offset : {0.0F, 1.0F}) {
            std::vector<float> x = random.values(n);
            long double mean = 0;
            for (float& value : x) mean += (value = 3.0F * value + offset);
            mean /= n;
            long double variance = 0;
            for (const float value : x) variance += (value - mean) * (value - mean);
            std::vector<long double> expected;
            for (const float value : x)
                expected.push_back((value - mean) / std::sqrt(variance / n));
            // Float sums of n values: measured 2.8e-6 at n = 20000.
            EXPECT_LT(relative_l2(standardized(x), expected),
                      1e-7 + 3e-8 * std::sqrt(static_cast<double>(n)))
                << n << ' ' << offset;
        }
    }
}

TEST(Standardize, FollowsItsFloatVariance) {
    EXPECT_EQ(standardized({5.0F}), std::vector<float>{0.0F});
    EXPECT_EQ(standardized({2.0F, 2.0F, 2.0F, 2.0F}), std::vector<float>(4));
    // The variance is lost beside the mean: 0 here, so the deviations are multiplied by 1e16.
    EXPECT_EQ(standardized({4096.0F, 4096.0F, 4096.0F, 4097.0F}),
              (std::vector<float>{-0.25e16F, -0.25e16F, -0.25e16F, 0.75e16F}));
    // A constant whose float sums make the variance negative.
    for (const float value : standardized(std::vector<float>(10, 0.1F)))
        EXPECT_TRUE(std::isnan(value));
}

}  // namespace
