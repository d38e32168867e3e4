// A direct transform of prime length with neighbouring outputs as lanes, in the order of the powers
// of a primitive root: there the roots that an input is multiplied by follow one another.
#pragma once

#include "fft/lane_elements.inl"
#include "fft/lane_fft_general.inl"
#include "fft/single_plan.h"
#include "simd/complex.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// pack_n packs of outputs of a direct transform of prime length, from the power `first` on;
/// returns output 0. Input j = g^b adds to output g^a the product with the root to the power a + b.
template <std::size_t pack_n, class T, class Input>
SORVO_INLINE ComplexVec sum_powers(ComplexVec* sums, const SinglePlanView& single,
                                   std::size_t first, Input input) {
    const float* const re = single.powers + first;
    const float* const im = re + single.power_n;
    ComplexVec zeroth = first_term(input(0));
    for (std::size_t i = 0; i < pack_n; ++i) {
        sums[i] = zeroth;
    }
    for (std::size_t j = 1; j < single.part_n; ++j) {
        const T x = input(j);
        const std::size_t b = single.exponents[j - 1];
        for (std::size_t i = 0; i < pack_n; ++i) {
            add_product(sums[i], ComplexVec{load(re + b + i * lane_n), load(im + b + i * lane_n)},
                        x);
        }
        add(zeroth, x);
    }
    return zeroth;
}

template <std::size_t pack_n, class T, class Input, class Finish>
[[gnu::noinline]] ComplexVec store_powers(float* dst, const SinglePlanView& single,
                                          std::size_t first, Input input, Finish finish) {
    ComplexVec sums[pack_n];
    const ComplexVec zeroth = sum_powers<pack_n, T>(sums, single, first, input);
    for (std::size_t i = 0; i < pack_n; ++i) {
        const ComplexVec value = finish(sums[i]);
        store_interleaved(dst + 2 * (first + i * lane_n), value.re, value.im);
    }
    return finish(zeroth);
}

/// The direct transform of the elements first, first + step, ...; put(k, value) takes output k as
/// two floats. Each group of packs brings output 0 along.
template <class T, class Finish, class Put>
void direct_transform(const SinglePlanView& single, const Elements<T>& elements, std::size_t first,
                      std::size_t step, float* work, Finish finish, Put put) {
    const auto input = [&](std::size_t j) { return elements.at(first + j * step); };
    const std::size_t pack_n = (single.part_n - 1 + lane_n - 1) / lane_n;
    constexpr std::size_t largest_group = 6;
    const std::size_t group_count = (pack_n + largest_group - 1) / largest_group;
    ComplexVec zeroth{};
    std::size_t done = 0;
    for (std::size_t group = 0; group < group_count; ++group) {
        const std::size_t next = pack_n * (group + 1) / group_count;
        const std::size_t from = done * lane_n;
        switch (next - done) {
            case 1:
                zeroth = store_powers<1, T>(work, single, from, input, finish);
                break;
            case 2:
                zeroth = store_powers<2, T>(work, single, from, input, finish);
                break;
            case 3:
                zeroth = store_powers<3, T>(work, single, from, input, finish);
                break;
            case 4:
                zeroth = store_powers<4, T>(work, single, from, input, finish);
                break;
            case 5:
                zeroth = store_powers<5, T>(work, single, from, input, finish);
                break;
            default:
                zeroth = store_powers<largest_group, T>(work, single, from, input, finish);
        }
        done = next;
    }
    const float output0[2] = {zeroth.re[0], zeroth.im[0]};
    put(0, output0);
    for (std::size_t k = 1; k < single.part_n; ++k) {
        put(k, work + std::size_t{2} * single.exponents[k - 1]);
    }
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
