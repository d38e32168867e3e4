#include "fft/single_plan.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "fft/fft_plan.h"

namespace sorvo::audio {
namespace {

std::size_t whole_packs(std::size_t n) {
    return (n + widest_lane_n - 1) / widest_lane_n;
}

/// Products of an output of a stage.
std::size_t products(const FftStage& stage) {
    return stage.factor == fused_twos ? 2 : stage.factor - 1;
}

/// How to share the stages between the two kinds of lanes.
struct Split {
    std::size_t outer_n;
    bool prime;  ///< the rows are direct transforms with outputs as lanes
    std::size_t part_n;
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

Split make_split(std::size_t n, const std::vector<FftStage>& stages, std::size_t base_n,
                 std::size_t outer_n, bool prime) {
    const std::size_t part_n = outer_n == 0 ? n : stages[outer_n - 1].sub_n;
    const std::size_t row_count = n / part_n;
    const std::size_t row_packs = whole_packs(part_n);
    std::size_t cost = 0;
    std::size_t twiddle_n = 0;
    std::size_t largest_factor = 0;
    for (std::size_t i = 0; i < outer_n; ++i) {
        cost += 3 * row_count * row_packs * products(stages[i]);
        twiddle_n += 2 * column_twiddles(stages[i]) * stages[i].sub_n;
        largest_factor = std::max(largest_factor, stages[i].factor);
    }
    std::size_t work_n = 2 * largest_factor * widest_lane_n;
    const std::size_t row_n = row_packs * widest_lane_n;
    if (prime) {
        cost += row_count * part_n * (2 * row_packs + 2);
        work_n = std::max(work_n, 2 * row_n);
    } else {
        std::size_t column_cost = base_n + 2;  // of an element, the transposition included
        for (std::size_t i = outer_n; i < stages.size(); ++i) {
            column_cost += 2 * products(stages[i]);
        }
        cost += whole_packs(row_count) * part_n * column_cost;
        work_n = std::max(work_n, 2 * (row_n + base_n) * widest_lane_n);
    }
    work_n += single_tail_n + (outer_n == 0 ? 0 : 2 * row_count * row_n);
    return {outer_n, prime, part_n, cost, twiddle_n, work_n};
}

Split best_split(std::size_t n, const std::vector<FftStage>& stages, std::size_t base_n) {
    Split best = {0, false, 0, std::numeric_limits<std::size_t>::max(), 0, 0};
    const auto consider = [&](std::size_t outer_n, bool prime) {
        const Split split = make_split(n, stages, base_n, outer_n, prime);
        if (split.twiddle_n <= max_twiddle_n && split.cost < best.cost) {
            best = split;
        }
    };
    consider(stages.size(), true);
    for (std::size_t outer_n = 1; outer_n <= stages.size(); ++outer_n) {
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

SinglePlan::SinglePlan(std::size_t n, const std::vector<FftStage>& stages, std::size_t base_n,
                       const std::vector<float>& table) {
    const Split split = best_split(n, stages, base_n);
    if (split.part_n == 0) {
        return;
    }
    part_n_ = split.part_n;
    row_n_ = whole_packs(part_n_) * widest_lane_n;
    row_count_ = n / part_n_;
    work_n_ = split.work_n;
    for (std::size_t i = 0; i < split.outer_n; ++i) {
        plan_stage(n, stages[i], table);
    }
    plan_rows();
    if (split.prime) {
        plan_powers(n, table);
    }
}

void SinglePlan::plan_stage(std::size_t n, const FftStage& stage, const std::vector<float>& table) {
    const std::size_t width = stage.sub_n / part_n_ * row_n_;
    const std::size_t twiddle_n = column_twiddles(stage);
    std::vector<float> twiddles(2 * twiddle_n * width);
    for (std::size_t k = 0; k < stage.sub_n; ++k) {
        const std::size_t place = k / part_n_ * row_n_ + k % part_n_;
        const std::size_t in_group = place % widest_lane_n;
        std::size_t to = 2 * twiddle_n * (place - in_group) + in_group;
        for (const std::size_t root : column_roots(n, stage, k)) {
            twiddles[to] = table[2 * root];
            twiddles[to + widest_lane_n] = table[2 * root + 1];
            to += 2 * widest_lane_n;
        }
    }
    twiddles_.push_back(std::move(twiddles));
    stages_.push_back(
        {stage.factor, stage.sub_n, 2 * width, stage.blocks, twiddle_n, twiddles_.back().data()});
}

void SinglePlan::plan_rows() {
    for (std::size_t residue = 0; residue < row_count_; ++residue) {
        std::size_t rest = residue;
        std::size_t row = 0;
        for (const RowStage& stage : stages_) {
            const std::size_t digit = rest % stage.factor;
            rest /= stage.factor;
            row += input_of(stage.factor, digit) * stage.hop;
        }
        rows_.push_back(static_cast<std::uint32_t>(row));
    }
    if (row_count_ > widest_lane_n || stages_.empty() || !has_stage_kernel(stages_.back().factor)) {
        return;
    }
    lane_residues_.resize(widest_lane_n);
    for (std::size_t residue = 0; residue < row_count_; ++residue) {
        lane_residues_[rows_[residue] / (2 * row_n_)] = static_cast<std::uint32_t>(residue);
    }
}

void SinglePlan::plan_powers(std::size_t n, const std::vector<float>& table) {
    const std::vector<std::size_t> elements = primitive_powers(part_n_);
    const std::size_t cycle = part_n_ - 1;
    const std::size_t power_n = cycle + row_n_;  // room for packs that begin at any power
    for (std::size_t part = 0; part < 2; ++part) {
        for (std::size_t i = 0; i < power_n; ++i) {
            powers_.push_back(table[2 * elements[i % cycle] * (n / part_n_) + part]);
        }
    }
    exponents_.resize(cycle);
    for (std::size_t i = 0; i < cycle; ++i) {
        exponents_[elements[i] - 1] = static_cast<std::uint32_t>(i);
    }
}

SinglePlanView SinglePlan::view() const {
    return {part_n_,
            row_n_,
            row_count_,
            stages_.size(),
            stages_.data(),
            rows_.data(),
            lane_residues_.empty() ? nullptr : lane_residues_.data(),
            powers_.empty() ? nullptr : powers_.data(),
            powers_.size() / 2,
            exponents_.data()};
}

}  // namespace sorvo::audio
