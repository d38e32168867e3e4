#include "fft/fft_plan.h"

#include <algorithm>
#include <utility>

#include "fft/fft.h"
#include "fft/fft_table.h"

namespace sorvo::audio {
namespace {

/// Adds the roots of column k of a stage: output u, input s = 1, 2, ... (input 0 is never
/// multiplied).
void add_roots(std::vector<std::size_t>& roots, std::size_t n, std::size_t factor,
               std::size_t sub_n, std::size_t k) {
    const std::size_t length = factor * sub_n;
    for (std::size_t u = 0; u < factor; ++u) {
        for (std::size_t s = 1; s < factor; ++s) {
            roots.push_back(s * (k + u * sub_n) % length * (n / length));
        }
    }
}

/// The first elements of the transforms that the innermost stage joins. Each stage splits its
/// blocks by the residue of the index, fused stages by the outer factor first.
std::vector<std::uint32_t> starts_of_parts(const std::vector<FftStage>& stages) {
    std::vector<std::uint32_t> starts(1, 0);
    for (const FftStage& stage : stages) {
        std::vector<std::uint32_t> split;
        for (const std::uint32_t start : starts) {
            for (std::size_t r = 0; r < stage.factor; ++r) {
                split.push_back(
                    start + static_cast<std::uint32_t>(input_of(stage.factor, r) * stage.blocks));
            }
        }
        starts = std::move(split);
    }
    return starts;
}

}  // namespace

std::size_t input_of(std::size_t factor, std::size_t r) {
    return factor == fused_twos ? r / 2 + 2 * (r % 2) : r;
}

bool has_stage_kernel(std::size_t factor) {
    return factor <= 7 && factor != 6;
}

std::vector<std::size_t> column_roots(std::size_t n, const FftStage& stage, std::size_t k) {
    std::vector<std::size_t> roots;
    if (stage.factor == fused_twos) {
        // The inner stage, then the outer ones of the columns k and k + sub_n that it feeds.
        add_roots(roots, n, 2, stage.sub_n, k);
        add_roots(roots, n, 2, 2 * stage.sub_n, k);
        add_roots(roots, n, 2, 2 * stage.sub_n, k + stage.sub_n);
    } else {
        add_roots(roots, n, stage.factor, stage.sub_n, k);
    }
    return roots;
}

FftPlan::FftPlan(int n, const std::vector<float>& table)
    : n_(static_cast<std::size_t>(n)), roots_(table.data()) {
    if (is_pow2(n)) {
        plan_pow2(table);
        if (n >= 64) {
            plan_single_pow2();
        }
    } else {
        plan_general(table);
    }
    view_ = make_view();
}

void FftPlan::plan_pow2(const std::vector<float>& table) {
    for (std::size_t span = n_; span >= 4; span /= 4) {
        for (std::size_t k = 0; k < span / 4; ++k) {
            const float* const group = table.data() + 12 * k * (n_ / span);
            twiddles_.insert(twiddles_.end(),
                             {group[4], group[5], group[0], group[1], group[9], group[11]});
        }
    }
}

void FftPlan::plan_single_pow2() {
    const float* twiddles = twiddles_.data();
    std::size_t span = n_;
    for (; span > 32; span /= 4) {
        for (std::size_t group = 0; group < span / 4; group += widest_lane_n) {
            for (std::size_t value = 0; value < 6; ++value) {
                for (std::size_t k = group; k < group + widest_lane_n; ++k) {
                    columns_.push_back(twiddles[6 * k + value]);
                }
            }
        }
        twiddles += 6 * (span / 4);
    }
    block_n_ = span;
    const std::size_t block_count = n_ / block_n_;  // NOLINT: block_n_ is not 0
    for (std::size_t i = 0; i < block_count; ++i) {
        std::size_t reversed = 0;
        for (std::size_t bit = 1; bit < block_count; bit *= 2) {
            reversed = 2 * reversed + (i / bit) % 2;
        }
        order_.push_back(static_cast<std::uint32_t>(reversed * 2 * block_n_));
    }
    while (order_.size() < widest_lane_n) {
        order_.push_back(order_.back());  // the lanes that are left over
    }
}

void FftPlan::plan_general(const std::vector<float>& table) {
    const std::vector<std::size_t> factors = fft_factors(n_);
    std::size_t length = n_;
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i < factors.size(); ++i) {
        const bool fused = factors[i] == 2 && i + 1 < factors.size() && factors[i + 1] == 2;
        const std::size_t factor = fused ? fused_twos : factors[i];
        const std::size_t sub_n = length / factor;
        stages_.push_back({factor, sub_n, n_ / length, nullptr});  // NOLINT: length is not 0
        starts.push_back(twiddles_.size());
        for (std::size_t k = 0; has_stage_kernel(factor) && k < sub_n; ++k) {
            for (const std::size_t root : column_roots(n_, stages_.back(), k)) {
                twiddles_.push_back(table[2 * root]);
                twiddles_.push_back(table[2 * root + 1]);
            }
        }
        i += fused ? 1 : 0;
        length = sub_n;
    }
    base_n_ = length;
    base_starts_ = starts_of_parts(stages_);
    for (std::size_t i = 0; i < stages_.size(); ++i) {
        if (has_stage_kernel(stages_[i].factor)) {
            stages_[i].twiddles = twiddles_.data() + starts[i];
        }
    }
    single_ = SinglePlan(n_, stages_, base_n_, table);
}

FftPlanView FftPlan::make_view() const {
    std::size_t largest = 1;
    for (const FftStage& stage : stages_) {
        largest = std::max(largest, stage.factor);
    }
    const std::size_t pow2_work_n = 2 * n_ + 2 * widest_lane_n * block_n_;
    return {n_,
            roots_,
            twiddles_.data(),
            stages_.data(),
            stages_.size(),
            base_n_,
            base_starts_.data(),
            largest,
            block_n_,
            columns_.data(),
            order_.data(),
            single_.view(),
            block_n_ != 0 ? pow2_work_n : single_.work_n()};
}

}  // namespace sorvo::audio
