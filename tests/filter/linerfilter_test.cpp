#include "filter/linerfilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "filter/designs.h"
#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/random.h"
#include "support/reference.h"
#include "util/exceptions.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

class LinerFilter : public testing::TestWithParam<Design> {
  protected:
    static constexpr int n = 300;
    const Design& design_ = GetParam();
    Random random_{21};
    const std::vector<float> x_ = random_.values(n);

    template <class Out, class In, class State>
    void run(std::vector<Out>& dst, const std::vector<In>& src, std::vector<State>& state,
             bool reverse = false) const {
        linerfilter(dst.data(), src.data(), design_.b.data(), design_.a.data(), state.data(),
                    static_cast<int>(dst.size()), static_cast<int>(src.size()), design_.b_n(),
                    design_.a_n(), static_cast<int>(state.size()), reverse);
    }
    int run(float* dst, const float* src, float* zi, int count, int zi_n) const {
        return sorvoAudioLinerFilter(dst, src, design_.b.data(), design_.a.data(), zi, count, count,
                                     design_.b_n(), design_.a_n(), zi_n);
    }
};

TEST_P(LinerFilter, MatchesTheDifferenceEquation) {
    const reference::Reals expected = reference::difference_equation(
        reference::Reals(x_.begin(), x_.end()), design_.b, design_.a);
    std::vector<float> y(n);
    ASSERT_EQ(run(y.data(), x_.data(), nullptr, n, 0), SORVO_AUDIO_OK);
    EXPECT_LT(relative_l2(y, expected), 1.5e-6);  // the state is float: measured 9.6e-7
    std::vector<double> wide(n);
    std::vector<double> state(design_.state_n());
    run(wide, x_, state);
    EXPECT_LT(relative_l2(wide, expected), 1e-14);  // measured 3.9e-15
}

TEST_P(LinerFilter, ContinuesFromItsStateToTheBit) {
    std::vector<float> whole(n);
    std::vector<float> final_state = random_.values(design_.state_n());
    const std::vector<float> start = final_state;
    run(whole, x_, final_state);
    for (const int chunk : {1, 7, 64, 299}) {
        std::vector<float> y = x_;  // in place
        Guarded<float> state(design_.state_n() + 2);
        std::copy(start.begin(), start.end(), state.data());
        for (int at = 0; at < n; at += chunk) {
            ASSERT_EQ(run(y.data() + at, y.data() + at, state, std::min(chunk, n - at),
                          static_cast<int>(state.size())),
                      SORVO_AUDIO_OK);
        }
        EXPECT_TRUE(same_bits(y, whole)) << chunk;
        EXPECT_TRUE(state.holds(design_.state_n())) << "state beyond N - 1 was touched";
        std::vector<float> state_values = state.values();
        state_values.resize(design_.state_n());
        EXPECT_TRUE(same_bits(state_values, final_state)) << chunk;
    }
}

TEST_P(LinerFilter, StartsFromRestWithoutRoomForAState) {
    if (design_.state_n() == 0) return;
    std::vector<float> from_rest(n);
    std::vector<float> zeros(design_.state_n());
    run(from_rest, x_, zeros);
    Guarded<float> too_short(design_.state_n() - 1);
    for (float* const state : {static_cast<float*>(nullptr), too_short.data()}) {
        std::vector<float> y(n);
        ASSERT_EQ(run(y.data(), x_.data(), state, n, static_cast<int>(too_short.size())), 0);
        EXPECT_TRUE(same_bits(y, from_rest));
    }
    EXPECT_TRUE(too_short.untouched());
}

TEST_P(LinerFilter, RunsBackwardAsOverTheReversedSignal) {
    const std::vector<float> start = random_.values(design_.state_n());
    std::vector<double> state(start.begin(), start.end());
    std::vector<double> other_state = state;
    std::vector<double> forward(n);
    std::vector<double> wide(x_.begin(), x_.end());
    std::reverse(wide.begin(), wide.end());
    run(forward, wide, state);
    std::reverse(forward.begin(), forward.end());
    std::vector<double> backward(x_.begin(), x_.end());
    run(backward, backward, other_state, true);
    EXPECT_TRUE(same_bits(backward, forward));
    EXPECT_TRUE(same_bits(other_state, state));
    std::vector<float> rounded(n);
    other_state.assign(start.begin(), start.end());
    run(rounded, std::vector<double>(x_.begin(), x_.end()), other_state, true);
    EXPECT_TRUE(same_bits(rounded, std::vector<float>(forward.begin(), forward.end())));
}

INSTANTIATE_TEST_SUITE_P(Designs, LinerFilter, testing::ValuesIn(designs()),
                         [](const auto& design) { return design.param.name; });

TEST(LinerFilter, WritesTheShorterOfTheTwoLengths) {
    const std::vector<float> x = {1, 2, 3, 4, 5};
    const std::vector<float> b = {0.5F, 0.5F};
    const float a = 1.0F;
    Guarded<float> more(7);
    ASSERT_EQ(sorvoAudioLinerFilter(more, x.data(), b.data(), &a, nullptr, 7, 5, 2, 1, 0), 0);
    EXPECT_TRUE(more.holds(5));
    Guarded<float> less(3);
    ASSERT_EQ(sorvoAudioLinerFilter(less, x.data(), b.data(), &a, nullptr, 3, 5, 2, 1, 0), 0);
    EXPECT_EQ(less.values(), (std::vector<float>{0.5F, 1.5F, 2.5F}));
    std::vector<float> reversed(3);  // begins at index 2
    linerfilter<float, float, float, float>(reversed.data(), x.data(), b.data(), &a, nullptr, 3, 5,
                                            2, 1, 0, true);
    EXPECT_EQ(reversed, (std::vector<float>{1.5F, 2.5F, 1.5F}));
}

TEST(LinerFilter, NamesTheBadCoefficientCount) {
    const float one = 1.0F;
    float y = 0.0F;
    for (const auto& [b_n, a_n, message] :
         {std::tuple(0, 1, "Invalid n_coef size."), std::tuple(1, 0, "Invalid d_coef size."),
          std::tuple(-1, -1, "Invalid n_coef size.")}) {
        try {
            linerfilter<float, float, float, float>(&y, &one, &one, &one, nullptr, 1, 1, b_n, a_n,
                                                    0, false);
            ADD_FAILURE() << message;
        } catch (const SorvoInvalidArgument& error) {
            EXPECT_STREQ(error.what(), message);
        }
    }
    EXPECT_EQ(y, 0.0F);
}

}  // namespace
