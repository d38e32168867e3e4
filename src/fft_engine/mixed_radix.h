#pragma once

#include <complex>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "fft_engine/cooley_tukey_factors.h"
#include "fft_engine/kernels.h"
#include "fft_engine/scratch.h"

namespace sorvo::audio::kelpon::fft {

/// A forward transform of one line of values in place.
class LineTransform {
  public:
    LineTransform() = default;
    LineTransform(const LineTransform&) = delete;
    LineTransform& operator=(const LineTransform&) = delete;
    virtual ~LineTransform() = default;

    /// The planes are padded to a multiple of 16 values.
    virtual void transform(Planes line, float* scratch) const = 0;
    virtual std::size_t scratch_floats() const = 0;
};

/// Makes the transform of a length too large for a stage of its own.
using MakeLineTransform = std::function<std::unique_ptr<LineTransform>(unsigned)>;

/// The transform of any length by stages in two passes. The input, read as a matrix of column_n
/// rows, is transformed down its columns, 16 of them at a time in a block that stays in the
/// first-level cache. The results are transposed into blocks of 16 lanes again, and the second pass
/// merges them down those. So every stage works on whole vectors, whatever its radix.
class MixedRadix {
  public:
    MixedRadix(unsigned n, SimdLevel level, const MakeLineTransform& make_line_transform);

    std::size_t scratch_floats() const { return scratch_n_; }

    /// Transforms forward and multiplies by `scale`; with `inverse` the inverse transform, likewise
    /// not scaled otherwise. `out` may be `in`.
    template <class Out, class In>
    void transform(Out out, In in, bool inverse, float scale, float* scratch) const;

  private:
    struct Stage {
        StageShape shape{};
        Twiddles kind = Twiddles::none;
        AlignedFloats twiddles;
        std::size_t twiddles_per_block = 0;  ///< floats to the next 16 lanes
        StageKernel kernel = nullptr;
        std::vector<std::complex<float>> roots;
        std::shared_ptr<const LineTransform> line_transform;
    };

    std::size_t count_scratch() const;
    Stage make_stage(const CooleyTukeyFactor& factor, unsigned pass_n, Twiddles kind,
                     const MakeLineTransform& make_line_transform) const;
    void run_stages(float* rows, const std::vector<Stage>& stages, std::size_t block,
                    std::size_t used_lane_n, float* scratch) const;
    void run_line_stage(float* rows, const Stage& stage, std::size_t used_lane_n,
                        float* scratch) const;

    unsigned n_;
    const Kernels& kernels_;
    CooleyTukeyFactors factors_;
    std::vector<unsigned> column_index_;
    std::vector<unsigned> row_position_;  ///< the row of a merging block that takes column q
    std::vector<Stage> column_stages_;
    std::vector<Stage> row_stages_;
    std::size_t scratch_n_;
};

}  // namespace sorvo::audio::kelpon::fft
