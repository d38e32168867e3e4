#include "fft/one_plan.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "util/bytes_of.h"

namespace sorvo::audio {
namespace {

std::size_t whole_groups(std::size_t n) {
    return (n + group_n - 1) / group_n;
}

/// Products of an output of a stage.
std::size_t products(const FftStage& stage) {
    return stage.factor == fused_twos ? 2 : stage.factor - 1;
}

/// How to share the stages between the two kinds of lanes.
struct Split {
    std::size_t outer_n;
    bool prime;  ///< the rows are direct transforms with outputs as lanes
    std::size_t inner_n;
    std::size_t cost;       ///< estimated, in half products of packs
    std::size_t twiddle_n;  ///< floats of twiddles
    std::size_t work_n;     ///< floats of working storage
};

/// Bounds the memory of a plan: a large factor takes its square of twiddles for each column.
constexpr std::size_t max_twiddle_n = std::size_t{1} << 20;

/// Twiddles of a column of a stage.
std::size_t column_twiddles(const FftStage& stage) {
    return stage.factor == fused_twos ? 6 : stage.factor * (stage.factor - 1);
}

Split make_split(const FftPlanView& plan, std::size_t outer_n, bool prime) {
    const std::size_t n = plan.n;
    const std::size_t base_n = plan.base_n;
    const FftStage* const stages = plan.stages;
    const std::size_t inner_n = outer_n == 0 ? n : stages[outer_n - 1].sub_n;
    const std::size_t inner_count = n / inner_n;
    const std::size_t inner_groups = whole_groups(inner_n);
    std::size_t cost = 0;
    std::size_t twiddle_n = 0;
    std::size_t largest_factor = 0;
    for (std::size_t i = 0; i < outer_n; ++i) {
        cost += 3 * inner_count * inner_groups * products(stages[i]);
        twiddle_n += 2 * column_twiddles(stages[i]) * stages[i].sub_n;
        largest_factor = std::max(largest_factor, stages[i].factor);
    }
    std::size_t work_n = 2 * largest_factor * group_n;
    const std::size_t padded_n = inner_groups * group_n;
    if (prime) {
        cost += inner_count * inner_n * (2 * inner_groups + 2);
        work_n = std::max(work_n, 2 * padded_n);
    } else {
        std::size_t column_cost = base_n + 2;  // of an element, the transposition included
        for (std::size_t i = outer_n; i < plan.stage_n; ++i) {
            column_cost += 2 * products(stages[i]);
        }
        cost += whole_groups(inner_count) * inner_n * column_cost;
        work_n = std::max(work_n, 2 * (padded_n + base_n) * group_n);
    }
    work_n += input_tail_n + (outer_n == 0 ? 0 : 2 * inner_count * padded_n);
    return {outer_n, prime, inner_n, cost, twiddle_n, work_n};
}

Split best_split(const FftPlanView& plan) {
    Split best = {0, false, 0, std::numeric_limits<std::size_t>::max(), 0, 0};
    const auto consider = [&](std::size_t outer_n, bool prime) {
        const Split split = make_split(plan, outer_n, prime);
        if (split.twiddle_n <= max_twiddle_n && split.cost < best.cost) {
            best = split;
        }
    };
    consider(plan.stage_n, true);
    for (std::size_t outer_n = 1; outer_n <= plan.stage_n; ++outer_n) {
        consider(outer_n, false);
    }
    return best;
}

/// The powers 0, 1, ... p - 2 of the smallest primitive root of the prime p > 2.
std::vector<std::size_t> primitive_powers(std::size_t p) {
    std::vector<std::size_t> powers;
    for (std::size_t root = 2; powers.size() != p - 1; ++root) {
        powers.clear();
        std::size_t power = 1;
        do {
            powers.push_back(power);
            power = power * root % p;
        } while (power != 1);
    }
    return powers;
}

}  // namespace

OnePlan::OnePlan(int n, const std::vector<float>& table) : fft_(n, table) {
    const FftPlanView& plan = fft_.view();
    if (plan.base_n == 0) {
        plan_pow2(plan);
    } else {
        plan_general(plan);
    }
    view_.columns = columns_.data();
    view_.order = order_.data();
    view_.outer_n = stages_.size();
    view_.stages = stages_.data();
    view_.offsets = offsets_.data();
    view_.lane_residues = lane_residues_.empty() ? nullptr : lane_residues_.data();
    view_.powers = powers_.empty() ? nullptr : powers_.data();
    view_.power_n = powers_.size() / 2;
    view_.exponents = exponents_.data();
}

std::size_t OnePlan::size() const {
    std::size_t result = fft_.size() + sizeof *this + bytes_of(columns_) + bytes_of(order_) +
                         bytes_of(stages_) + bytes_of(offsets_) + bytes_of(lane_residues_) +
                         bytes_of(powers_) + bytes_of(exponents_);
    for (const AlignedFloats& twiddles : twiddles_) {
        result += bytes_of(twiddles);
    }
    return result;
}

void OnePlan::plan_pow2(const FftPlanView& plan) {
    if (plan.n < 64) {
        return;
    }
    const float* twiddles = plan.twiddles;
    std::size_t span = plan.n;
    for (; span > 32; span /= 4) {
        for (std::size_t group = 0; group < span / 4; group += group_n) {
            for (std::size_t value = 0; value < 6; ++value) {
                for (std::size_t k = group; k < group + group_n; ++k) {
                    columns_.push_back(twiddles[6 * k + value]);
                }
            }
        }
        twiddles += 6 * (span / 4);
    }
    const std::size_t block_count = plan.n / span;  // NOLINT: span is not 0
    for (std::size_t i = 0; i < block_count; ++i) {
        std::size_t reversed = 0;
        for (std::size_t bit = 1; bit < block_count; bit *= 2) {
            reversed = 2 * reversed + (i / bit) % 2;
        }
        order_.push_back(static_cast<std::uint32_t>(reversed * 2 * span));
    }
    while (order_.size() < group_n) {
        order_.push_back(order_.back());  // the lanes that are left over
    }
    view_.block_n = span;
    view_.work_n = 2 * plan.n + 2 * group_n * span;
}

void OnePlan::plan_general(const FftPlanView& plan) {
    const Split split = best_split(plan);
    if (split.inner_n == 0) {
        return;
    }
    view_.inner_n = split.inner_n;
    view_.padded_n = whole_groups(split.inner_n) * group_n;
    view_.inner_count = plan.n / split.inner_n;
    view_.work_n = split.work_n;
    for (std::size_t i = 0; i < split.outer_n; ++i) {
        plan_stage(plan, plan.stages[i]);
    }
    plan_offsets();
    if (split.prime) {
        plan_powers(plan);
    }
}

void OnePlan::plan_stage(const FftPlanView& plan, const FftStage& stage) {
    const std::size_t width = stage.sub_n / view_.inner_n * view_.padded_n;
    const std::size_t twiddle_n = column_twiddles(stage);
    AlignedFloats twiddles(2 * twiddle_n * width);
    for (std::size_t k = 0; k < stage.sub_n; ++k) {
        const std::size_t place = k / view_.inner_n * view_.padded_n + k % view_.inner_n;
        const std::size_t in_group = place % group_n;
        std::size_t to = 2 * twiddle_n * (place - in_group) + in_group;
        for (const std::size_t root : column_roots(stage, k)) {
            twiddles[to] = plan.roots[2 * root];
            twiddles[to + group_n] = plan.roots[2 * root + 1];
            to += 2 * group_n;
        }
    }
    twiddles_.push_back(std::move(twiddles));
    stages_.push_back(
        {stage.factor, stage.sub_n, 2 * width, stage.blocks, twiddle_n, twiddles_.back().data()});
}

void OnePlan::plan_offsets() {
    for (std::size_t residue = 0; residue < view_.inner_count; ++residue) {
        std::size_t rest = residue;
        std::size_t offset = 0;
        for (const OuterStage& stage : stages_) {
            const std::size_t digit = rest % stage.factor;
            rest /= stage.factor;
            offset += input_of(stage.factor, digit) * stage.hop;
        }
        offsets_.push_back(static_cast<std::uint32_t>(offset));
    }
    if (view_.inner_count > group_n || stages_.empty() || !is_known_radix(stages_.back().factor)) {
        return;
    }
    lane_residues_.resize(group_n);
    for (std::size_t residue = 0; residue < view_.inner_count; ++residue) {
        lane_residues_[offsets_[residue] / (2 * view_.padded_n)] =
            static_cast<std::uint32_t>(residue);
    }
}

void OnePlan::plan_powers(const FftPlanView& plan) {
    const std::size_t length = view_.inner_n;
    const std::vector<std::size_t> elements = primitive_powers(length);
    const std::size_t cycle = length - 1;
    const std::size_t power_n = cycle + view_.padded_n;  // room for vectors that begin at any power
    for (std::size_t part = 0; part < 2; ++part) {
        for (std::size_t i = 0; i < power_n; ++i) {
            powers_.push_back(plan.roots[2 * elements[i % cycle] * (plan.n / length) + part]);
        }
    }
    exponents_.resize(cycle);
    for (std::size_t i = 0; i < cycle; ++i) {
        exponents_[elements[i] - 1] = static_cast<std::uint32_t>(i);
    }
}

}  // namespace sorvo::audio
