#include "fft/plan_cache.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "robustness/child_process.h"

namespace sorvo::audio::test {
namespace {

// What is kept is found a second time. What is not, for every place is in use, is made twice.
template <class Plan>
bool is_kept(int n) {
    const PlanUse<Plan> first(n, false);
    const PlanUse<Plan> second(n, false);
    return &*first == &*second;
}

template <class Plan>
void expect_places_in_a_child() {
    std::vector<std::optional<PlanUse<Plan>>> uses(kept_plan_n);
    for (std::size_t i = 0; i < kept_plan_n; ++i) uses[i].emplace(static_cast<int>(100 + i), false);
    EXPECT_EQ(run_in_child(20, [] { return is_kept<Plan>(77) && is_kept<Plan>(78); }), "");
    EXPECT_FALSE(is_kept<Plan>(77));
    uses.clear();
    EXPECT_TRUE(is_kept<Plan>(77));
}

TEST(PlanCache, FreesItsPlacesInAForkedChild) {
    expect_places_in_a_child<FftPlan>();
    expect_places_in_a_child<OnePlan>();
}

}  // namespace
}  // namespace sorvo::audio::test
