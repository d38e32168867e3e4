// The loops of the engine that work on vectors, compiled once per instruction set.
//
// Their data are rows of 16 complex values, 16 real parts followed by 16 imaginary ones. Each of
// the 16 lanes is a transform of its own, so no result depends on how many lanes an instruction
// handles.
#pragma once

#include <complex>
#include <cstddef>
#include <tuple>

#include "simd/dispatch.h"

namespace sorvo::audio::kelpon::fft {

constexpr std::size_t row_lane_n = 16;
constexpr std::size_t row_floats = 2 * row_lane_n;

constexpr std::size_t round_up_to_lanes(std::size_t n) {
    return (n + row_lane_n - 1) / row_lane_n * row_lane_n;
}

/// Complex values with the real parts in one array and the imaginary parts in another. A transform
/// with the two exchanged on both sides is the inverse transform.
struct ConstPlanes {
    const float* re;
    const float* im;
    ConstPlanes swapped() const { return {im, re}; }
};
struct Planes {
    float* re;
    float* im;
    Planes swapped() const { return {im, re}; }
    operator ConstPlanes() const { return {re, im}; }
};

/// Which elements of a sequence of n the rows of a block hold: row r has elements first + stride *
/// index[r] and those that follow, as many as lanes are in use. The other lanes may hold anything.
struct BlockShape {
    std::size_t n;
    std::size_t first;
    std::size_t stride;
    std::size_t row_n;
    std::size_t used_lane_n;
};

/// One stage of a transform that runs down the rows of a block, in place: in each of `block_n`
/// blocks of radix * span rows it merges `radix` transforms of length `span`.
struct StageShape {
    std::size_t span;
    std::size_t block_n;
    unsigned radix;
    /// exp(-2 pi i j / radix) for stages without a butterfly of their own; real and imaginary parts
    /// alternate.
    const float* roots;
};

/// The twiddles of input a > 0 of output k lie at index k * (radix - 1) + a - 1: one complex number
/// for all lanes (per_row), or a row of them (per_lane).
enum class Twiddles { none, per_row, per_lane };

/// `scratch` is room for direct_scratch_floats(radix) where a stage is summed directly.
using StageKernel = void (*)(float* rows, const float* twiddles, const StageShape& shape,
                             std::size_t used_lane_n, float* scratch);

/// The largest radix of a stage that is summed directly; larger ones take Bluestein's algorithm,
/// line by line. Measured: with two lanes in use that is faster from 79 on, with all 16 not yet at
/// 97.
constexpr unsigned max_direct_radix = 97;
constexpr unsigned max_butterfly_radix = 8;

/// Sums and differences of opposite inputs.
constexpr std::size_t direct_scratch_floats(unsigned radix) {
    return 2 * row_floats * (radix / 2);
}

/// Kernels that read the input of a transform, `In` being `const short*`, `const float*`,
/// `const std::complex<float>*` or `ConstPlanes`.
template <class In>
struct InputKernels {
    /// Fills the rows of a block.
    void (*load)(float* rows, In in, const BlockShape& shape, const unsigned* index, bool swapped);
    /// product[j] = in[j] * chirp[j] for j below n, and 0 up to the next multiple of 16.
    void (*multiply_chirp)(Planes product, In in, ConstPlanes chirp, std::size_t n, bool swapped);
};

/// Kernels that write the output, `Out` being `std::complex<float>*` or `Planes`.
template <class Out>
struct OutputKernels {
    /// Writes the rows of a block, index[r] being r, times `scale`. A row is written up to its 16th
    /// value also where these belong to a following row or block, which must be stored later.
    void (*store)(Out out, const float* rows, const BlockShape& shape, float scale, bool swapped);
    /// out[j] = in[j] * chirp[j] for j below n.
    void (*multiply_chirp)(Out out, ConstPlanes in, ConstPlanes chirp, std::size_t n, bool swapped);
};

/// Turns the columns of up to 16 rows into rows: value `column` of row r goes to place r of row
/// `index[column]` of the target.
struct TransposeTarget {
    float* first_row;
    std::size_t row_stride;
    std::size_t im_offset;
    const unsigned* index;
    std::size_t row_n;
};
struct TransposeSource {
    const float* first_row;
    std::size_t row_stride;
    std::size_t im_offset;
    std::size_t row_n;
};

struct StageKernels {
    StageKernel butterfly[max_butterfly_radix + 1];  ///< by radix; null where there is none
    StageKernel direct;
    StageKernel twiddle;  ///< the twiddles of a stage without its transform, if it has any
};

struct Kernels {
    std::tuple<InputKernels<const short*>, InputKernels<const float*>,
               InputKernels<const std::complex<float>*>, InputKernels<ConstPlanes>>
        input;
    std::tuple<OutputKernels<std::complex<float>*>, OutputKernels<Planes>> output;
    void (*transpose)(const TransposeTarget& target, const TransposeSource& source);
    /// product = a * b for n values, n a multiple of 16.
    void (*multiply)(Planes product, ConstPlanes a, ConstPlanes b, std::size_t n);
    StageKernels stages[3];  ///< by kind of twiddles
};

SORVO_DECLARE_KERNELS(Kernels, kernels)

}  // namespace sorvo::audio::kelpon::fft
