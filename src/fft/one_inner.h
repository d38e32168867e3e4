// The inner transforms of one transform: those of the elements with the same residue modulo their
// number.
#pragma once

#include "fft/batch_general.h"
#include "fft/groups.h"
#include "fft/one_input.h"
#include "fft/one_prime.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// The elements k, k + 1, ... of four transforms that lie in the lanes of x from `lane` on: the
/// real (part 0) or imaginary parts of one transform in each vector.
SORVO_INLINE void transpose_lanes(FloatVec* results, const FloatVec* x, std::size_t k,
                                  std::size_t part, std::size_t lane) {
    constexpr std::size_t hop = 2 * lane_n;
    const float* const from = reinterpret_cast<const float*>(x) + k * hop + part * lane_n + lane;
    for (std::size_t i = 0; i < 4; ++i) {
        results[i] = load_quarters(from + i * hop, 4 * hop);
    }
    transpose_quarters(results[0], results[1], results[2], results[3]);
}

/// The results of the residues first, first + 1, ... from their transforms in the lanes.
[[gnu::noinline]] void store_results(float* results, const OnePlanView& one, const FloatVec* x,
                                     std::size_t first, std::size_t count) {
    for (std::size_t k = 0; k < one.inner_n; k += lane_n) {
        for (std::size_t lane = 0; lane < lane_n; lane += 4) {
            for (std::size_t part = 0; part < 2; ++part) {
                float* const to = results + group_offset(k) + part * group_n;
                FloatVec transposed[4];
                transpose_lanes(transposed, x, k, part, lane);
                for (std::size_t i = 0; i < 4 && lane + i < count; ++i) {
                    store(to + one.offsets[first + lane + i], transposed[i]);
                }
            }
        }
    }
}

void clear_padding(FloatVec* x, const OnePlanView& one) {
    for (std::size_t k = one.inner_n; k < one.padded_n; ++k) {
        store_complex(x, k, {FloatVec{}, FloatVec{}});
    }
}

/// All at once, a residue in each lane; they stay in the lanes.
template <Products products, class Elements>
void inner_in_lanes(const FftPlanView& plan, const OnePlanView& one, const Elements& elements,
                    FloatVec* work) {
    clear_padding(work, one);
    const OrderedInput<Elements> input{elements, load<BitsVec>(one.lane_residues)};
    BatchTransform<OrderedInput<Elements>, products>(plan, work + 2 * one.padded_n, input)
        .run_inner(work, one.outer_n);
}

/// lane_n residues at a time; the results are transposed.
template <Products products, class Elements>
void inner_transposed(float* results, const FftPlanView& plan, const OnePlanView& one,
                      const Elements& elements, FloatVec* work) {
    clear_padding(work, one);
    for (std::size_t first = 0; first < one.inner_count; first += lane_n) {
        const ResidueInput<Elements> input{elements, first};
        BatchTransform<ResidueInput<Elements>, products>(plan, work + 2 * one.padded_n, input)
            .run_inner(work, one.outer_n);
        store_results(results, one, work, first, one.inner_count - first);
    }
}

/// One residue after the other, outputs as lanes: where these are direct transforms of a prime
/// length, and too few to fill the lanes.
template <Products products, class Elements, class Finish>
void inner_directly(float* results, const OnePlanView& one, Complex<float> root_0,
                    const Elements& elements, float* work, Finish finish) {
    for (std::size_t residue = 0; residue < one.inner_count; ++residue) {
        float* const result = results + one.offsets[residue];
        prime_transform<products>(one, root_0, elements, residue, one.inner_count, work, finish,
                                  [=](std::size_t k, const float* value) {
                                      result[group_offset(k)] = value[0];
                                      result[group_offset(k) + group_n] = value[1];
                                  });
    }
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
