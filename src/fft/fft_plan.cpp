#include "fft/fft_plan.h"

#include <algorithm>
#include <utility>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "util/bytes_of.h"

namespace sorvo::audio {
namespace {

/// From the outermost stage inwards.
std::vector<FftStage> make_stages(std::size_t n) {
    const std::vector<std::size_t> factors = fft_factors(n);
    std::vector<FftStage> stages;
    std::size_t blocks = 1;
    for (std::size_t i = 0; i < factors.size(); ++i) {
        const bool fused = factors[i] == 2 && i + 1 < factors.size() && factors[i + 1] == 2;
        const std::size_t factor = fused ? fused_twos : factors[i];
        stages.push_back({factor, n / (blocks * factor), blocks, nullptr});
        blocks *= factor;
        i += fused ? 1 : 0;
    }
    return stages;
}

/// The first elements of the direct transforms that the innermost stage joins. Each stage splits
/// its blocks by the residue of the index.
std::vector<std::uint32_t> starts_of_bases(const std::vector<FftStage>& stages) {
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

/// The roots that column k of a stage multiplies by, in the order in which Column counts them, as
/// positions in the table.
std::vector<std::size_t> column_roots(const FftStage& stage, std::size_t k) {
    std::vector<std::size_t> roots;
    const std::size_t length = stage.factor * stage.sub_n;
    if (stage.factor == fused_twos) {
        for (std::size_t u = 0; u < 2; ++u) {
            roots.push_back(2 * (k + u * stage.sub_n) * stage.blocks);
        }
        for (std::size_t u = 0; u < 4; ++u) {
            roots.push_back((k + u * stage.sub_n) * stage.blocks);
        }
        return roots;
    }
    for (std::size_t u = 0; u < stage.factor; ++u) {
        for (std::size_t s = 1; s < stage.factor; ++s) {
            roots.push_back(s * (k + u * stage.sub_n) % length * stage.blocks);
        }
    }
    return roots;
}

FftPlan::FftPlan(int n, const std::vector<float>& table) {
    const auto size = static_cast<std::size_t>(n);
    if (is_pow2(n)) {
        plan_pow2(size, table);
    } else {
        plan_general(size, table);
    }
    view_.n = size;
    view_.roots = table.data();
    view_.twiddles = twiddles_.data();
    view_.stages = stages_.data();
    view_.stage_n = stages_.size();
    view_.base_starts = base_starts_.data();
}

void FftPlan::plan_pow2(std::size_t n, const std::vector<float>& table) {
    for (std::size_t span = n; span >= 4; span /= 4) {
        for (std::size_t k = 0; k < span / 4; ++k) {
            const float* const group = table.data() + 12 * k * (n / span);
            twiddles_.insert(twiddles_.end(),
                             {group[4], group[5], group[0], group[1], group[9], group[11]});
        }
    }
}

void FftPlan::plan_general(std::size_t n, const std::vector<float>& table) {
    stages_ = make_stages(n);
    base_starts_ = starts_of_bases(stages_);
    std::size_t largest = view_.base_n = n / base_starts_.size();
    std::vector<std::size_t> starts;
    for (const FftStage& stage : stages_) {
        largest = std::max(largest, stage.factor);
        starts.push_back(twiddles_.size());
        for (std::size_t k = 0; is_known_radix(stage.factor) && k < stage.sub_n; ++k) {
            for (const std::size_t root : column_roots(stage, k)) {
                twiddles_.push_back(table[2 * root]);
                twiddles_.push_back(table[2 * root + 1]);
            }
        }
    }
    for (std::size_t i = 0; i < stages_.size(); ++i) {
        stages_[i].twiddles =
            is_known_radix(stages_[i].factor) ? twiddles_.data() + starts[i] : nullptr;
    }
    view_.scratch_n = 2 * largest;
}

std::size_t FftPlan::size() const {
    return sizeof *this + bytes_of(twiddles_) + bytes_of(stages_) + bytes_of(base_starts_);
}

}  // namespace sorvo::audio
