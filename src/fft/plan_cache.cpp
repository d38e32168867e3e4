#include "fft/plan_cache.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <limits>

#include "fft/fft_table.h"
#include "util/build_lock.h"

namespace sorvo::audio {

/// A place for a plan. Whoever changes it needs it for itself: `users` is then far below 0, and
/// nobody gets in.
template <class Plan>
struct KeptPlan {
    std::atomic<std::int64_t> key{0};  ///< the length, negative for inverse transforms; 0 for none
    std::atomic<std::int64_t> users{0};
    std::atomic<std::uint64_t> last_used{0};
    const Plan* plan = nullptr;
};

namespace {

constexpr std::int64_t locked = std::numeric_limits<std::int64_t>::min() / 2;

/// Stays as it is when the process ends: there may still be calls.
template <class Plan>
struct Kept {
    /// Powers of two, forward and inverse.
    std::array<std::array<std::atomic<const Plan*>, 2>, 32> pow2;
    std::array<KeptPlan<Plan>, kept_plan_n> places;
    std::atomic<std::uint64_t> clock{0};
    std::size_t bytes = 0;  // guarded by the build lock, as whatever adds a plan

    KeptPlan<Plan>* find(std::int64_t key) {
        for (KeptPlan<Plan>& place : places) {
            if (place.key.load(std::memory_order_relaxed) != key) {
                continue;
            }
            if (place.users.fetch_add(1, std::memory_order_acquire) >= 0 &&
                place.key.load(std::memory_order_relaxed) == key) {
                if (place.last_used.load(std::memory_order_relaxed) !=
                    clock.load(std::memory_order_relaxed)) {
                    place.last_used.store(clock.fetch_add(1, std::memory_order_relaxed) + 1,
                                          std::memory_order_relaxed);
                }
                return &place;
            }
            place.users.fetch_sub(1, std::memory_order_release);
        }
        return nullptr;
    }

    /// Fills a place that is locked, perhaps with nothing, and lets its first user in.
    void put(KeptPlan<Plan>& place, const Plan* plan, std::int64_t key) {
        if (place.plan != nullptr) {
            bytes -= place.plan->size();
            delete place.plan;
        }
        place.plan = plan;
        place.key.store(key, std::memory_order_relaxed);
        bytes += plan != nullptr ? plan->size() : 0;
        const std::int64_t users = plan != nullptr ? 1 : 0;
        place.users.fetch_add(users - locked, std::memory_order_release);
    }

    /// The place that was used least recently of those that nobody uses, locked; or nullptr.
    KeptPlan<Plan>* lock_oldest(bool empty_ones_too) {
        std::array<bool, kept_plan_n> tried{};
        for (;;) {
            std::size_t oldest = kept_plan_n;
            for (std::size_t i = 0; i < kept_plan_n; ++i) {
                const bool eligible = !tried[i] && (empty_ones_too || places[i].plan != nullptr);
                if (eligible && (oldest == kept_plan_n ||
                                 places[i].last_used.load() < places[oldest].last_used.load())) {
                    oldest = i;
                }
            }
            if (oldest == kept_plan_n) {
                return nullptr;
            }
            std::int64_t nobody = 0;
            if (places[oldest].users.compare_exchange_strong(nobody, locked)) {
                return &places[oldest];
            }
            tried[oldest] = true;
        }
    }

    /// Keeps the plan, which is then in use; nullptr where there is no room for it.
    KeptPlan<Plan>* keep(std::unique_ptr<Plan>& plan, std::int64_t key) {
        while (bytes + plan->size() > kept_plan_bytes) {
            KeptPlan<Plan>* const oldest = lock_oldest(false);
            if (oldest == nullptr) {
                return nullptr;
            }
            put(*oldest, nullptr, 0);
        }
        KeptPlan<Plan>* const place = lock_oldest(true);
        if (place != nullptr) {
            place->last_used = ++clock;
            put(*place, plan.release(), key);
        }
        return place;
    }
};

template <class Plan>
Kept<Plan> kept_plans;

/// The threads that used plans stayed in the parent. No place is locked: fork() waits for builders.
[[maybe_unused]] const bool frees_places = call_in_forked_child([] {
    for (auto& place : kept_plans<FftPlan>.places) {
        place.users = 0;
    }
    for (auto& place : kept_plans<OnePlan>.places) {
        place.users = 0;
    }
});

}  // namespace

template <class Plan>
PlanUse<Plan>::PlanUse(int n, bool inverse) {
    Kept<Plan>& kept = kept_plans<Plan>;
    std::atomic<const Plan*>* forever = nullptr;
    if (is_pow2(n)) {
        forever = &kept.pow2[static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(n)))]
                            [inverse ? 1 : 0];
        plan_ = forever->load(std::memory_order_acquire);
        if (plan_ != nullptr) {
            return;
        }
    }
    const std::int64_t key = inverse ? -std::int64_t{n} : n;
    kept_ = kept.find(key);
    if (kept_ == nullptr) {
        FftTable& tables = FftTable::instance();
        const std::vector<float>& table = inverse ? tables.ref_inv_table(n) : tables.ref_table(n);
        const BuildLock guard(Cache::plan);
        kept_ = kept.find(key);
        if (kept_ == nullptr) {
            own_ = std::make_unique<Plan>(n, table);
            plan_ = own_.get();
            if (forever == nullptr) {
                kept_ = kept.keep(own_, key);
            } else if (forever->load(std::memory_order_relaxed) == nullptr) {
                forever->store(own_.release(), std::memory_order_release);
            }
        }
    }
    if (kept_ != nullptr) {
        plan_ = kept_->plan;
    }
}

template <class Plan>
PlanUse<Plan>::~PlanUse() {
    if (kept_ != nullptr) {
        kept_->users.fetch_sub(1, std::memory_order_release);
    }
}

template class PlanUse<FftPlan>;
template class PlanUse<OnePlan>;

}  // namespace sorvo::audio
