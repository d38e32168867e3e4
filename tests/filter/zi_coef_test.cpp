#include "filter/zi_coef.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "filter/designs.h"
#include "filter/linerfilter.h"
#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/guarded.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

class ZiCoef : public testing::TestWithParam<Design> {};

TEST_P(ZiCoef, MakesTheStepResponseConstant) {
    const Design& d = GetParam();
    double gain = 0.0;
    double sum_a = 0.0;
    for (const float b : d.b) gain += double{b};
    for (const float a : d.a) sum_a += double{a};
    gain /= sum_a;
    std::vector<double> state(d.state_n());
    create_zi_coef(state.data(), d.b.data(), d.a.data(), static_cast<int>(state.size()), d.b_n(),
                   d.a_n());
    const std::vector<float> step(100, 1.0F);
    std::vector<double> y(step.size());
    linerfilter(y.data(), step.data(), d.b.data(), d.a.data(), state.data(), 100, 100, d.b_n(),
                d.a_n(), static_cast<int>(state.size()), false);
    double scale = std::abs(gain);
    for (const float b : d.b) scale += std::abs(double{b});
    for (std::size_t i = 0; i < y.size(); ++i) EXPECT_NEAR(y[i], gain, 1e-13 * scale) << i;
}

TEST_P(ZiCoef, FitsAnyLength) {
    const Design& d = GetParam();
    std::vector<double> wide(d.state_n() + 3, -1.0);
    create_zi_coef(wide.data(), d.b.data(), d.a.data(), static_cast<int>(wide.size()), d.b_n(),
                   d.a_n());
    for (std::size_t n = 1; n <= wide.size(); ++n) {
        Guarded<float> zi(n);
        ASSERT_EQ(sorvoAudioGetLinerFilterZiCoef(zi, d.b.data(), d.a.data(), static_cast<int>(n),
                                                 d.b_n(), d.a_n()),
                  SORVO_AUDIO_OK);
        EXPECT_TRUE(zi.filled());
        EXPECT_TRUE(same_bits(
            zi.values(),
            std::vector<float>(wide.begin(), wide.begin() + static_cast<std::ptrdiff_t>(n))));
    }
    for (std::size_t i = d.state_n(); i < wide.size(); ++i) EXPECT_EQ(bits_of(wide[i]), 0U);
}

INSTANTIATE_TEST_SUITE_P(Designs, ZiCoef, testing::ValuesIn(designs()),
                         [](const auto& design) { return design.param.name; });

TEST(ZiCoef, HasNoFiniteStateForAPoleAtOne) {
    const std::vector<float> b = {1.0F, 0.0F};
    const std::vector<float> a = {1.0F, -1.0F};
    float zi = 0.0F;
    ASSERT_EQ(sorvoAudioGetLinerFilterZiCoef(&zi, b.data(), a.data(), 1, 2, 2), SORVO_AUDIO_OK);
    EXPECT_TRUE(std::isinf(zi));
    zi = 5.0F;
    create_zi_coef(&zi, b.data(), a.data(), 0, 0, 0);  // nothing wanted: nothing checked
    EXPECT_EQ(zi, 5.0F);
}

}  // namespace
