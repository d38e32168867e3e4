// What the kernels of one transform by itself need besides an FftPlan. docs/kernels.md draws how
// its values lie in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fft/fft_plan.h"
#include "util/aligned_floats.h"

namespace sorvo::audio {

/// Elements of a group (groups.h): the lanes of the widest level.
constexpr std::size_t group_n = 16;

/// A stage that joins the results of the inner transforms.
struct OuterStage {
    std::size_t factor;
    std::size_t sub_n;      ///< elements of a sub-transform
    std::size_t hop;        ///< floats from one sub-transform to the next
    std::size_t blocks;     ///< how many such stages there are side by side
    std::size_t twiddle_n;  ///< of a column
    const float* twiddles;  ///< groups of columns; of each group twiddle after twiddle
};

/// Plain pointers, as in FftPlanView.
struct OnePlanView {
    // Powers of two.
    std::size_t block_n;         ///< elements that are left to transforms with a block in each lane
    const float* columns;        ///< the twiddles of the stages above, in groups: c, s of k, 2k, 3k
    const std::uint32_t* order;  ///< where block rev(i) begins

    // Other lengths: the elements r, r + inner_count, r + 2 inner_count, ... are transformed first,
    // for each residue r; the outer stages join the results.
    std::size_t inner_n;           ///< length of an inner transform; 0 where there is no such way
    std::size_t padded_n;          ///< room for its result: whole groups
    std::size_t inner_count;       ///< how many there are
    std::size_t outer_n;           ///< how many stages join them
    const OuterStage* stages;      ///< these, from the outermost inwards
    const std::uint32_t* offsets;  ///< where the result of residue r begins

    /// The residues in the order of their results, filled up to group_n, or nullptr where there are
    /// more, or where the stage that joins them first has no code of its own.
    const std::uint32_t* lane_residues;

    /// Where inner transforms are direct ones of a prime length with neighbouring outputs as lanes,
    /// or nullptr. Output 0 apart, they are computed in the order of the powers of a primitive
    /// root.
    const float* powers;  ///< the roots of unity to these powers, twice over: real, imaginary parts
    std::size_t power_n;  ///< how many values each of the two has
    const std::uint32_t* exponents;  ///< of the primitive root, for element 1, 2, ...

    std::size_t work_n;  ///< floats of working storage
};

/// The part of the working storage for the end of the input.
constexpr std::size_t input_tail_n = 4 * group_n;

/// Points into a table of FftTable. Immutable.
class OnePlan {
  public:
    OnePlan(int n, const std::vector<float>& table);
    OnePlan(const OnePlan&) = delete;
    OnePlan& operator=(const OnePlan&) = delete;

    const OnePlanView& view() const { return view_; }
    const FftPlanView& fft() const { return fft_.view(); }

    /// Bytes of storage.
    std::size_t size() const;

  private:
    void plan_pow2(const FftPlanView& plan);
    void plan_general(const FftPlanView& plan);
    void plan_stage(const FftPlanView& plan, const FftStage& stage);
    void plan_offsets();
    void plan_powers(const FftPlanView& plan);

    FftPlan fft_;
    AlignedFloats columns_;
    std::vector<std::uint32_t> order_;
    std::vector<OuterStage> stages_;
    std::vector<AlignedFloats> twiddles_;
    std::vector<std::uint32_t> offsets_;
    std::vector<std::uint32_t> lane_residues_;
    std::vector<float> powers_;
    std::vector<std::uint32_t> exponents_;
    OnePlanView view_{};  ///< points into the vectors, whose elements stay where they are
};

}  // namespace sorvo::audio
