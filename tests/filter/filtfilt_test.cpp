#include "filter/filtfilt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "filter/designs.h"
#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/random.h"
#include "support/reference.h"
#include "util/exceptions.h"

namespace {

using namespace sorvo::test;
using reference::Padding;

struct FiltFiltCase {
    const char* name;
    int pad_type;
    Padding padding;
};

class FiltFilt : public testing::TestWithParam<FiltFiltCase> {
  protected:
    int pad_type() const { return GetParam().pad_type; }

    int run(float* dst, const std::vector<float>& x, const Design& d, int dst_n,
            int pad_len) const {
        return sorvoAudioFilterFilter(dst, x.data(), d.b.data(), d.a.data(), dst_n,
                                      static_cast<int>(x.size()), d.b_n(), d.a_n(), pad_type(),
                                      pad_len);
    }
};

TEST_P(FiltFilt, MatchesTwoSettledPasses) {
    Random random(31);
    for (const Design& d : designs()) {
        for (const std::size_t n : {1U, 2U, 50U}) {
            for (const std::size_t pad_n : {0U, 1U, 12U, 49U, 70U}) {
                if (pad_type() != SORVO_AUDIO_PAD_CONSTANT && pad_n >= n) continue;
                SCOPED_TRACE(testing::Message() << d.name << " " << n << " samples, " << pad_n);
                const std::vector<float> x = random.values(n);
                std::vector<float> y(n);
                ASSERT_EQ(run(y.data(), x, d, static_cast<int>(n), static_cast<int>(pad_n)), 0);
                const auto expected = reference::forward_backward(x, d.b, d.a, GetParam().padding,
                                                                  pad_type() == 0 ? 0 : pad_n);
                EXPECT_LT(relative_l2(y, expected), 1e-7);  // measured 5.4e-8
            }
        }
    }
}

// A pulse in the middle stays symmetric: no phase shift.
TEST_P(FiltFilt, HasZeroPhase) {
    std::vector<float> pulse(301);
    pulse[150] = 1.0F;
    pulse[149] = pulse[151] = 0.5F;
    for (const Design& d : designs()) {
        std::vector<float> y(pulse.size());
        ASSERT_EQ(run(y.data(), pulse, d, 301, 60), SORVO_AUDIO_OK);
        std::vector<float> mirrored(y.rbegin(), y.rend());
        EXPECT_LT(relative_l2(y, mirrored), 1e-8) << d.name;  // measured 4.4e-15
    }
}

TEST_P(FiltFilt, KeepsAConstant) {
    const Design low_pass{"low", {0.1F, 0.1F}, {1.0F, -0.8F}};  // gain 1 at 0 Hz, but for rounding
    const std::vector<float> x(40, 3.0F);
    std::vector<float> y(40);
    ASSERT_EQ(run(y.data(), x, low_pass, 40, 10), SORVO_AUDIO_OK);
    for (const float value : y) EXPECT_NEAR(value, 3.0F, 3e-6);
    const Design identity{"identity", {1.0F}, {1.0F}};
    Random random(32);
    const std::vector<float> noise = random.values(40);
    ASSERT_EQ(run(y.data(), noise, identity, 40, 10), SORVO_AUDIO_OK);
    EXPECT_EQ(y, noise);
}

TEST_P(FiltFilt, WritesWhatIsAskedForAndThere) {
    Random random(33);
    const std::vector<float> x = random.values(30);
    const int pad_len = 8;
    const std::size_t there = pad_type() == 0 ? 30 : 30 + pad_len;
    for (const Design& d : {random_design(1, 1), random_design(3, 3)}) {
        std::vector<float> exact(30);
        ASSERT_EQ(run(exact.data(), x, d, 30, pad_len), SORVO_AUDIO_OK);
        for (const std::size_t dst_n : {1U, 29U, 31U, 38U, 60U}) {
            Guarded<float> out(dst_n);
            ASSERT_EQ(run(out, x, d, static_cast<int>(dst_n), pad_len), SORVO_AUDIO_OK);
            EXPECT_TRUE(out.holds(std::min(dst_n, there))) << dst_n;
            std::vector<float> common = out.values();
            common.resize(std::min<std::size_t>(dst_n, 30));
            EXPECT_TRUE(same_bits(
                common,
                std::vector<float>(exact.begin(),
                                   exact.begin() + static_cast<std::ptrdiff_t>(common.size()))));
        }
    }
}

TEST_P(FiltFilt, RefusesReflectionsThatLeaveTheSignal) {
    const Design d = random_design(2, 2);
    for (const int n : {1, 5}) {
        const std::vector<float> x(static_cast<std::size_t>(n), 1.0F);
        for (const int pad_len : {n, n + 1, 1000}) {
            Guarded<float> out(static_cast<std::size_t>(n));
            const bool reflects =
                pad_type() == SORVO_AUDIO_PAD_ODD || pad_type() == SORVO_AUDIO_PAD_REFLECT;
            EXPECT_EQ(run(out, x, d, n, pad_len), reflects ? SORVO_AUDIO_ERROR_ARGUMENT : 0);
            EXPECT_TRUE(reflects ? out.untouched() : out.filled()) << n << ' ' << pad_len;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Extensions, FiltFilt,
    testing::Values(FiltFiltCase{"none", SORVO_AUDIO_PAD_NONE, Padding::zeros},
                    FiltFiltCase{"odd", SORVO_AUDIO_PAD_ODD, Padding::odd},
                    FiltFiltCase{"reflect", SORVO_AUDIO_PAD_REFLECT, Padding::reflect},
                    FiltFiltCase{"constant", SORVO_AUDIO_PAD_CONSTANT, Padding::constant}),
    [](const auto& extension) { return extension.param.name; });

TEST(FiltFilt, NamesAnUnknownExtension) {
    const float one = 1.0F;
    float y = 0.0F;
    for (const auto& [pad_type, message] :
         {std::pair(4, "Invalid pad_type."), std::pair(2, "Invalid pad_len value.")}) {
        try {
            sorvo::audio::filtfilt(&y, &one, &one, &one, 1, 1, 1, 1, pad_type, 1);
            ADD_FAILURE() << message;
        } catch (const sorvo::audio::SorvoInvalidArgument& error) {
            EXPECT_STREQ(error.what(), message);
        }
    }
    EXPECT_EQ(y, 0.0F);
}

}  // namespace
