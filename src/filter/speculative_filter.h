#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "filter/checkpoints.h"
#include "filter/chunk_plan.h"
#include "filter/coefficients.h"
#include "filter/path.h"
#include "simd/level.h"

namespace sorvo::audio {

/// Fewer samples are not worth the lanes.
constexpr std::size_t min_speculative_filter_n = (chunk_lane_n + 1) * min_warm_up_n;

/// The difference equation of a filter of one or two state values, with chunks of the signal side
/// by side if there are samples enough for the filter.
///
/// The state at the beginning of a chunk is predicted: it is that which comes out of so many
/// samples before that the filter should have forgotten where it started. Rounding makes the states
/// of two runs over the same samples equal in every bit. The chunks are run from these states, with
/// checkpoints on the way, and then verified in order: where the chunk before ends in the predicted
/// state, everything that followed from it is what the filter does; where it does not, samples are
/// filtered one by one until the state is that of a checkpoint. So the result is the same in any
/// case, and only the speed differs.
template <class Out, class In, class State>
class SpeculativeFilter {
  public:
    /// For at most max_n samples a call, or for those whose results replace them. All memory is had
    /// here. The coefficients must stay.
    SpeculativeFilter(const FilterCoefficients& coef, std::size_t max_n, bool in_place,
                      SimdLevel level);

    void run(const Path<Out>& dst, const Path<const In>& src, State* state);

  private:
    /// A part of the signal for all lanes.
    struct Round {
        const Path<Out>& dst;
        const Path<const In>& src;
        std::size_t begin;
        ChunkPlan plan;

        std::size_t chunks_begin() const { return begin + plan.warm_up_n; }
    };

    /// The states at the beginning of all chunks, from the true one at the beginning of the round.
    void predict(const Round& round, const State* state);
    void run_chunks(const Round& round);
    /// Corrects the outputs. `state` is the true one, before and after. Returns how many chunks
    /// never met it.
    std::size_t verify(const Round& round, State* state) const;
    void run_rows(const Round& round, std::size_t position, std::size_t n);

    const FilterCoefficients& coef_;
    ChunkKernel<Out, In, State> kernel_;
    std::size_t warm_up_n_;  ///< 0 where the filter does not forget fast enough
    Checkpoints<State> checkpoints_;
    std::vector<State> z_;                    ///< of all lanes, [state value][lane]
    std::unique_ptr<LaneRow<In>[]> in_rows_;  ///< not initialised, as the next
    std::unique_ptr<LaneRow<Out>[]> out_rows_;
    std::vector<In> copy_;  ///< the samples of a round, which are needed again to correct outputs
    bool in_place_;
};

}  // namespace sorvo::audio
