// What the lane kernels need of a transform besides its roots of unity: the order of its stages and
// their twiddles in the order in which a stage reads them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fft/single_plan.h"

namespace sorvo::audio {

/// One stage of a transform whose length is not a power of two: it joins `factor` transforms of
/// length `sub_n` each into one. Two stages of factor 2 in a row are one of `fused_twos`: read and
/// written once, with the arithmetic of both.
struct FftStage {
    std::size_t factor;
    std::size_t sub_n;
    std::size_t blocks;     ///< how many such stages there are side by side: n / (factor sub_n)
    const float* twiddles;  ///< nullptr where the stage looks its roots up in the table
};

constexpr std::size_t fused_twos = 4;  // 4 is never a factor by itself

/// The input of a stage that residue r goes to, and the residue that input r has: two stages in one
/// first join the inputs 0 and 1, and 2 and 3.
std::size_t input_of(std::size_t factor, std::size_t r);

/// True for the factors that the kernels know; for others they loop over the inputs of a column.
bool has_stage_kernel(std::size_t factor);

/// The roots that column k of a stage of a transform of length n multiplies by, in the order of the
/// arithmetic, as positions in the table of n roots.
std::vector<std::size_t> column_roots(std::size_t n, const FftStage& stage, std::size_t k);

/// Plain pointers: kernels are compiled for one processor level each and may not share inline code.
struct FftPlanView {
    std::size_t n;
    const float* roots;      ///< the table of FftTable
    const float* twiddles;   ///< powers of two: stage after stage, k after k, (c, s) of k, 2k, 3k
    const FftStage* stages;  ///< other lengths: from the outermost stage inwards
    std::size_t stage_n;
    std::size_t base_n;  ///< length of the direct transforms that the innermost stage joins
    const std::uint32_t* base_starts;  ///< the first element of each of them, in storage order
    std::size_t largest_factor;        ///< of the stages, at least 1

    /// For one transform of a power of two with its own elements as lanes; block_n is 0 where there
    /// is no such way.
    std::size_t block_n;         ///< elements that are left to transforms with a block in each lane
    const float* columns;        ///< the stages above, each c, s of k, 2k, 3k in turn
    const std::uint32_t* order;  ///< where block rev(i) begins

    SinglePlanView single;  ///< the same for other lengths
    std::size_t work_n;     ///< floats of working storage that one transform takes
};

/// Longer transforms are computed one at a time.
constexpr int max_planned_n = 4096;

/// Yet longer ones have no plan.
constexpr int max_single_n = 65536;

/// Belongs to a table of FftTable and points into it. Immutable.
class FftPlan {
  public:
    FftPlan(int n, const std::vector<float>& table);
    FftPlan(FftPlan&&) = default;

    const FftPlanView& view() const { return view_; }

  private:
    void plan_pow2(const std::vector<float>& table);
    void plan_single_pow2();
    void plan_general(const std::vector<float>& table);
    FftPlanView make_view() const;

    std::size_t n_;
    const float* roots_;
    std::vector<float> twiddles_;
    std::vector<FftStage> stages_;
    std::size_t base_n_ = 0;
    std::vector<std::uint32_t> base_starts_;
    std::size_t block_n_ = 0;
    std::vector<float> columns_;
    std::vector<std::uint32_t> order_;
    SinglePlan single_;
    FftPlanView view_;  ///< points into the vectors, whose elements stay where they are
};

}  // namespace sorvo::audio
