// What the kernel of one transform needs where the length is not a power of two.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sorvo::audio {

struct FftStage;

/// A stage that joins rows.
struct RowStage {
    std::size_t factor;
    std::size_t sub_n;      ///< elements of an input
    std::size_t hop;        ///< floats of the rows from one input to the next
    std::size_t blocks;     ///< how many such stages there are
    std::size_t twiddle_n;  ///< of a column
    const float* twiddles;  ///< see lane_fft_single_general.inl
};

/// Lanes are first neighbouring residues of a transform's input, then neighbouring outputs: the
/// elements r, r + n / part_n, r + 2 n / part_n, ... are transformed by the inner stages, and each
/// result is a row that the outer stages join. Plain pointers, as in FftPlanView.
struct SinglePlanView {
    std::size_t part_n;  ///< length of a row; 0 where there is no such way
    std::size_t row_n;   ///< the same with its padding
    std::size_t row_count;
    std::size_t outer_n;        ///< how many stages join rows
    const RowStage* stages;     ///< these, from the outermost inwards
    const std::uint32_t* rows;  ///< where the row of residue r begins

    /// The residues of the rows in their order, filled up to widest_lane_n, or nullptr where there
    /// are more rows or the stage that joins them first has no kernel.
    const std::uint32_t* lane_residues;

    /// Where rows are direct transforms of a prime length with neighbouring outputs as lanes, or
    /// nullptr. Output 0 apart, they are computed in the order of the powers of a primitive root.
    const float* powers;  ///< the roots of unity to these powers, twice over: real, imaginary parts
    std::size_t power_n;  ///< how many values each of the two has
    const std::uint32_t* exponents;  ///< of the primitive root, for element 1, 2, ...
};

/// Lanes of the widest level; rows are padded to it and stand at multiples of it.
constexpr std::size_t widest_lane_n = 16;

/// The part of the working storage for the end of the input.
constexpr std::size_t single_tail_n = 4 * widest_lane_n;

/// Belongs to an FftPlan. Immutable.
class SinglePlan {
  public:
    SinglePlan() = default;
    SinglePlan(std::size_t n, const std::vector<FftStage>& stages, std::size_t base_n,
               const std::vector<float>& table);
    SinglePlan(SinglePlan&&) = default;
    SinglePlan& operator=(SinglePlan&&) = default;

    SinglePlanView view() const;

    /// Floats of working storage that a transform takes.
    std::size_t work_n() const { return work_n_; }

  private:
    void plan_rows();
    void plan_stage(std::size_t n, const FftStage& stage, const std::vector<float>& table);
    void plan_powers(std::size_t n, const std::vector<float>& table);

    std::size_t part_n_ = 0;
    std::size_t work_n_ = 0;
    std::size_t row_n_ = 0;
    std::size_t row_count_ = 0;
    std::vector<RowStage> stages_;
    std::vector<std::vector<float>> twiddles_;
    std::vector<std::uint32_t> rows_;
    std::vector<std::uint32_t> lane_residues_;
    std::vector<float> powers_;
    std::vector<std::uint32_t> exponents_;
};

}  // namespace sorvo::audio
