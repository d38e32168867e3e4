// The arithmetic of a stage of one transform, lane_n neighbouring columns at a time.
#pragma once

#include "fft/fft_plan.h"
#include "fft/lane_fft_general.inl"
#include "fft/lane_groups.inl"
#include "simd/complex.h"
#include "simd/shuffle.h"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

/// Twiddles of lane_n columns, in the order of the arithmetic.
struct RowTwiddles {
    const float* at;

    SORVO_INLINE ComplexVec operator[](std::size_t i) const {
        return load_group(at + 2 * i * group_n);
    }
};

constexpr std::size_t any_factor = 0;  // not known before the plan

/// The outputs of lane_n columns of a stage: put(u, value) of the inputs get(0), get(1), ...
template <std::size_t factor>
struct Columns {
    static constexpr std::size_t fixed_factor = factor;

    template <class Get, class Put>
    SORVO_INLINE static void join(std::size_t /*factor*/, RowTwiddles w, FloatVec* /*scratch*/,
                                  Get get, Put put) {
        ComplexVec y[factor];
        for (std::size_t s = 0; s < factor; ++s) {
            y[s] = get(s);
        }
        for (std::size_t u = 0; u < factor; ++u) {
            ComplexVec sum = y[0];
            for (std::size_t s = 1; s < factor; ++s) {
                add_product(sum, w[u * (factor - 1) + s - 1], y[s]);
            }
            put(u, sum);
        }
    }
};

SORVO_INLINE ComplexVec plus_product(ComplexVec a, ComplexVec w, ComplexVec b) {
    add_product(a, w, b);
    return a;
}

template <>
struct Columns<fused_twos> {
    static constexpr std::size_t fixed_factor = fused_twos;

    template <class Get, class Put>
    SORVO_INLINE static void join(std::size_t /*factor*/, RowTwiddles w, FloatVec* /*scratch*/,
                                  Get get, Put put) {
        const ComplexVec y[4] = {get(0), get(1), get(2), get(3)};
        const ComplexVec a = plus_product(y[0], w[0], y[1]);
        const ComplexVec b = plus_product(y[2], w[0], y[3]);
        put(0, plus_product(a, w[2], b));
        put(2, plus_product(a, w[3], b));
        const ComplexVec c = plus_product(y[0], w[1], y[1]);
        const ComplexVec d = plus_product(y[2], w[1], y[3]);
        put(1, plus_product(c, w[4], d));
        put(3, plus_product(c, w[5], d));
    }
};

/// Any factor: `scratch` is room for the inputs.
template <>
struct Columns<any_factor> {
    static constexpr std::size_t fixed_factor = any_factor;

    template <class Get, class Put>
    SORVO_INLINE static void join(std::size_t factor, RowTwiddles w, FloatVec* scratch, Get get,
                                  Put put) {
        for (std::size_t s = 0; s < factor; ++s) {
            store_complex(scratch, s, get(s));
        }
        for (std::size_t u = 0; u < factor; ++u) {
            ComplexVec sum = load_complex(scratch, 0);
            for (std::size_t s = 1; s < factor; ++s) {
                add_product(sum, w[u * (factor - 1) + s - 1], load_complex(scratch, s));
            }
            put(u, sum);
        }
    }
};

/// Calls body(Columns<factor>()).
template <class Body>
SORVO_INLINE void with_columns(std::size_t factor, Body body) {
    switch (factor) {
        case 2:
            body(Columns<2>());
            break;
        case 3:
            body(Columns<3>());
            break;
        case fused_twos:
            body(Columns<fused_twos>());
            break;
        case 5:
            body(Columns<5>());
            break;
        case 7:
            body(Columns<7>());
            break;
        default:
            body(Columns<any_factor>());
    }
}

}  // namespace
}  // namespace sorvo::audio::SORVO_LEVEL
