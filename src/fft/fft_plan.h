// What kernels need of a transform besides its roots of unity: the order of its stages, and the
// twiddles where the table of roots does not have them in a useful order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fft/radix.h"

namespace sorvo::audio {

/// One stage of a transform whose length is not a power of two: it joins `factor` sub-transforms of
/// length `sub_n` each into one.
struct FftStage {
    std::size_t factor;  ///< or fused_twos
    std::size_t sub_n;
    std::size_t blocks;  ///< how many such stages there are side by side: n / (factor sub_n)
    const float*
        twiddles;  ///< of column after column; nullptr for factors without code of their own
};

/// The input of a stage that residue r goes to, and the residue that input r has: two stages in one
/// first join the inputs 0 and 1, and 2 and 3.
std::size_t input_of(std::size_t factor, std::size_t r);

/// The roots that column k of a stage multiplies by, in the order in which Column counts them, as
/// positions in the table.
std::vector<std::size_t> column_roots(const FftStage& stage, std::size_t k);

/// Plain pointers: kernels are compiled for one level each and may not share inline code.
struct FftPlanView {
    std::size_t n;
    const float* roots;      ///< the table of FftTable
    const float* twiddles;   ///< powers of two: stage after stage, k after k, (c, s) of k, 2k, 3k
    const FftStage* stages;  ///< other lengths: from the outermost stage inwards
    std::size_t stage_n;
    std::size_t base_n;  ///< length of the direct transforms that the innermost stage joins; 0 for
                         ///< powers of two
    const std::uint32_t* base_starts;  ///< the first element of each of them, in storage order
    std::size_t scratch_n;             ///< values that a transform keeps aside, in floats a lane
};

/// Longer transforms are computed one at a time.
constexpr int max_batch_n = 4096;

/// Yet longer ones have no plan.
constexpr int max_planned_n = 65536;

/// Points into a table of FftTable. Immutable.
class FftPlan {
  public:
    FftPlan(int n, const std::vector<float>& table);
    FftPlan(const FftPlan&) = delete;
    FftPlan& operator=(const FftPlan&) = delete;

    const FftPlanView& view() const { return view_; }

    /// Bytes of storage.
    std::size_t size() const;

  private:
    void plan_pow2(std::size_t n, const std::vector<float>& table);
    void plan_general(std::size_t n, const std::vector<float>& table);

    std::vector<float> twiddles_;
    std::vector<FftStage> stages_;
    std::vector<std::uint32_t> base_starts_;
    FftPlanView view_{};  ///< points into the vectors, whose elements stay where they are
};

}  // namespace sorvo::audio
