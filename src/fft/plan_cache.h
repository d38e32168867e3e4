// The plans that were used last. What they hold is derived from the tables and can be made anew, so
// that few are kept: a program that goes through many lengths is not left with all of them. Those
// of powers of two, which are few and no larger than twice their tables, stay for good.
#pragma once

#include <memory>

#include "fft/one_plan.h"

namespace sorvo::audio {

/// Of each kind of plan at most so many are kept, and so many bytes.
constexpr std::size_t kept_plan_n = 16;
constexpr std::size_t kept_plan_bytes = std::size_t{8} << 20;

template <class Plan>
struct KeptPlan;

/// A plan (FftPlan or OnePlan) while it is used: no other thread can have it removed. A plan that
/// is there is found without a lock.
template <class Plan>
class PlanUse {
  public:
    /// For 1 <= n <= max_planned_n.
    PlanUse(int n, bool inverse);
    ~PlanUse();
    PlanUse(const PlanUse&) = delete;
    PlanUse& operator=(const PlanUse&) = delete;

    const Plan& operator*() const { return *plan_; }
    const Plan* operator->() const { return plan_; }

  private:
    const Plan* plan_;
    KeptPlan<Plan>* kept_ = nullptr;  ///< where it is kept for a while
    std::unique_ptr<Plan> own_;       ///< where all places were in use
};

}  // namespace sorvo::audio
