// A direct transform of prime length with neighbouring outputs as lanes, in the order of the powers
// of a primitive root: there the roots that an input is multiplied by follow one another, and need
// neither a gather nor n^2 of them. Input j = g^b adds to output g^a the product with the root to
// the power a + b.
#pragma once

#include "fft/one_input.h"
#include "fft/one_plan.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// The outputs of vec_n vectors from the power `first` on, each as `finish` makes it of its sum;
/// returns output 0.
template <std::size_t vec_n, Products products, class Input, class Finish>
[[gnu::noinline]] ComplexVec store_powers(float* dst, const OnePlanView& one, Complex<float> root_0,
                                          std::size_t first, Input input, Finish finish) {
    const float* const re = one.powers + first;
    const float* const im = re + one.power_n;
    ComplexVec sums[vec_n];
    auto start = input(0);
    if (products == Products::needed) {
        start = at_least_zero(start);
    }
    ComplexVec zeroth = first_term<products>(as_complex(start), root_0);
    for (ComplexVec& sum : sums) {
        sum = zeroth;
    }
    add_products(
        sums, one.inner_n,
        [&](std::size_t i, std::size_t j) {
            const std::size_t at = one.exponents[j - 1] + i * lane_n;
            return ComplexVec{load(re + at), load(im + at)};
        },
        [&](std::size_t j) {
            const auto x = input(j);
            if (products == Products::needed) {
                add(zeroth, x);
            } else {
                add_product(zeroth, root_0, as_complex(x));
            }
            return x;
        });
    for (std::size_t i = 0; i < vec_n; ++i) {
        const ComplexVec value = finish(sums[i]);
        store_interleaved(dst + 2 * (first + i * lane_n), value.re, value.im);
    }
    return finish(zeroth);
}

/// The direct transform of the elements first, first + step, ...; put(k, value) takes output k as
/// two floats. Each group of vectors brings output 0 along.
template <Products products, class Elements, class Finish, class Put>
void prime_transform(const OnePlanView& one, Complex<float> root_0, const Elements& elements,
                     std::size_t first, std::size_t step, float* work, Finish finish, Put put) {
    const auto input = [&](std::size_t j) { return elements.at(first + j * step); };
    const std::size_t vec_n = (one.inner_n - 1 + lane_n - 1) / lane_n;
    constexpr std::size_t largest = 6;
    const std::size_t pass_n = (vec_n + largest - 1) / largest;
    ComplexVec zeroth{};
    std::size_t done = 0;
    for (std::size_t pass = 0; pass < pass_n; ++pass) {
        const std::size_t next = vec_n * (pass + 1) / pass_n;
        const auto store_some = [&](auto count) {
            zeroth = store_powers<decltype(count)::factor, products>(work, one, root_0,
                                                                     done * lane_n, input, finish);
        };
        switch (next - done) {
            case 1:
                store_some(Radix<1>());
                break;
            case 2:
                store_some(Radix<2>());
                break;
            case 3:
                store_some(Radix<3>());
                break;
            case 4:
                store_some(Radix<4>());
                break;
            case 5:
                store_some(Radix<5>());
                break;
            default:
                store_some(Radix<largest>());
        }
        done = next;
    }
    const float output_0[2] = {zeroth.re[0], zeroth.im[0]};
    put(0, output_0);
    for (std::size_t k = 1; k < one.inner_n; ++k) {
        put(k, work + std::size_t{2} * one.exponents[k - 1]);
    }
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
