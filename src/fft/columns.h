// The columns of a stage of a transform whose length is not a power of two. Column k takes input s
// from element k of sub-transform s, and its output u is element k + u sub_n of the result:
//   output u = sum over s of w(u, s) input s,   w(u, s) = e^(-+2 pi i s (k + u sub_n) / (factor
//   sub_n))
// A direct transform is a stage with sub_n = 1.
#pragma once

#include "fft/butterflies.h"
#include "fft/radix.h"

namespace sorvo::audio::SORVO_LEVEL {

SORVO_INLINE FloatVec at_least_zero(FloatVec x) {
    return x + FloatVec{};  // -0 becomes +0, as in a sum
}

SORVO_INLINE ComplexVec at_least_zero(ComplexVec x) {
    return {at_least_zero(x.re), at_least_zero(x.im)};
}

SORVO_INLINE ComplexVec as_complex(FloatVec x) {
    return {x, FloatVec{}};
}

SORVO_INLINE ComplexVec as_complex(ComplexVec x) {
    return x;
}

SORVO_INLINE void add(ComplexVec& sum, FloatVec x) {
    sum.re += x;
}

SORVO_INLINE void add(ComplexVec& sum, ComplexVec x) {
    sum = sum + x;
}

/// The outputs 0 ... output_n - 1 of a column: put(u, value) of the inputs get(s), which are
/// complex or, with Products::needed, real numbers. w(u, s) are the twiddles, of which `one` is
/// that of input 0. With `ones`, those of output 0 are one as well.
template <std::size_t factor>
struct Column {
    template <Products products, bool ones = false, class One, class Twiddle, class Get, class Put>
    SORVO_INLINE static void transform(One one, Twiddle w, FloatVec* /*scratch*/,
                                       std::size_t /*factor*/, std::size_t output_n, Get get,
                                       Put put) {
        decltype(get(0)) y[factor];
#pragma GCC unroll 8
        for (std::size_t s = 0; s < factor; ++s) {
            y[s] = get(s);
        }
#pragma GCC unroll 8
        for (std::size_t u = 0; u < factor; ++u) {
            if (u >= output_n) {
                continue;
            }
            ComplexVec sum[1] = {first_term<products>(as_complex(y[0]), one)};
            if (ones && products == Products::needed && u == 0) {
                for (std::size_t s = 1; s < factor; ++s) {
                    add(sum[0], y[s]);
                }
            } else {
                add_products(
                    sum, factor, [&](std::size_t, std::size_t s) { return w(u, s); },
                    [&](std::size_t s) { return y[s]; });
            }
            put(u, sum[0]);
        }
    }
};

/// Two stages of factor 2 in one. Its inputs 0 and 1, and 2 and 3, are joined first, by the
/// twiddles w(u) of outputs u = 0 and 1; then the results of either, by the twiddles w(2 + u) of
/// output u.
template <>
struct Column<fused_twos> {
    template <Products products, bool ones = false, class One, class Twiddle, class Get, class Put>
    SORVO_INLINE static void transform(One one, Twiddle w, FloatVec* /*scratch*/,
                                       std::size_t /*factor*/, std::size_t output_n, Get get,
                                       Put put) {
        const ComplexVec y[4] = {get(0), get(1), get(2), get(3)};
        const auto join = [&](ComplexVec a, ComplexVec b, std::size_t i) {
            ComplexVec sum = first_term<products>(a, one);
            add_product(sum, w(i), b);
            return sum;
        };
        const ComplexVec a = join(y[0], y[1], 0);
        const ComplexVec b = join(y[2], y[3], 0);
        put(0, join(a, b, 2));
        if (output_n > 2) {
            put(2, join(a, b, 4));
        }
        const ComplexVec c = join(y[0], y[1], 1);
        const ComplexVec d = join(y[2], y[3], 1);
        put(1, join(c, d, 3));
        if (output_n > 3) {
            put(3, join(c, d, 5));
        }
    }
};

/// Any other factor, given as an argument; `scratch` is room for the inputs. Those of direct
/// transforms are summed four at a time.
template <>
struct Column<any_factor> {
    template <Products products, bool ones = false, class One, class Twiddle, class Get, class Put>
    SORVO_INLINE static void transform(One one, Twiddle w, FloatVec* scratch, std::size_t factor,
                                       std::size_t output_n, Get get, Put put) {
        using Value = decltype(get(0));
        auto* const y = reinterpret_cast<Value*>(scratch);
        for (std::size_t s = 0; s < factor; ++s) {
            y[s] = get(s);
        }
        constexpr std::size_t group = ones ? 4 : 1;
        for (std::size_t u = 0; u < output_n; u += group) {
            ComplexVec sums[group];
            for (ComplexVec& sum : sums) {
                sum = first_term<products>(as_complex(y[0]), one);
            }
            auto next = w.template from<group>(u);
            add_products(sums, factor, next, [&](std::size_t s) { return y[s]; });
            for (std::size_t i = 0; i < group && u + i < output_n; ++i) {
                put(u + i, sums[i]);
            }
        }
    }
};

}  // namespace sorvo::audio::SORVO_LEVEL
