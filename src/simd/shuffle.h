// Moving values between lanes, and between lanes and memory.
//
// A quarter is 16 bytes of a vector, the widest piece in which every processor moves values freely.
// Wider vectors are put together from quarters, so that most moves stay within one.
#pragma once

#include <utility>

#include "simd/vector.h"

namespace sorvo::audio::SORVO_LEVEL {

template <class Pattern, class V, std::size_t... i>
SORVO_INLINE auto shuffle(V a, V b, std::index_sequence<i...>) {
    return __builtin_shufflevector(a, b, static_cast<int>(Pattern::source(i))...);
}

/// Lane i of the result is lane Pattern::source(i) of a, or of b for what lies above the lanes of
/// a.
template <class Pattern, class V>
SORVO_INLINE V shuffle(V a, V b) {
    return shuffle<Pattern>(a, b, std::make_index_sequence<lanes_of<V>>());
}

template <class V>
constexpr std::size_t quarter_n = 16 / sizeof(V{}[0]);  ///< lanes of a quarter

/// In each quarter a0 b0 a1 b1 ... of its lower or upper half.
template <class V, bool upper>
struct ZipQuarters {
    static constexpr std::size_t source(std::size_t i) {
        const std::size_t within = i % quarter_n<V>;
        return i - within + (upper ? quarter_n<V> / 2 : 0) + within / 2 + i % 2 * lanes_of<V>;
    }
};

template <class V>
SORVO_INLINE V zip_quarters_low(V a, V b) {
    return shuffle<ZipQuarters<V, false>>(a, b);
}

template <class V>
SORVO_INLINE V zip_quarters_high(V a, V b) {
    return shuffle<ZipQuarters<V, true>>(a, b);
}

/// The lower halves of a and b, or their upper halves.
template <class V, bool upper>
struct Halves {
    static constexpr std::size_t source(std::size_t i) {
        constexpr std::size_t half = lanes_of<V> / 2;
        return i % half + (upper ? half : 0) + i / half * lanes_of<V>;
    }
};

template <class V>
SORVO_INLINE V lower_halves(V a, V b) {
    return shuffle<Halves<V, false>>(a, b);
}

template <class V>
SORVO_INLINE V upper_halves(V a, V b) {
    return shuffle<Halves<V, true>>(a, b);
}

/// a0 b0 a1 b1 ... of the lower or the upper halves of a and b.
template <class V, bool upper>
struct Zip {
    static constexpr std::size_t source(std::size_t i) {
        return i / 2 + (upper ? lanes_of<V> / 2 : 0) + i % 2 * lanes_of<V>;
    }
};

/// The even or the odd lanes of a, then of b.
template <class V, bool odd>
struct Unzip {
    static constexpr std::size_t source(std::size_t i) { return 2 * i + (odd ? 1 : 0); }
};

/// The even or the odd lanes of each quarter of a, then of b.
template <class V, bool odd>
struct UnzipQuarters {
    static constexpr std::size_t source(std::size_t i) {
        constexpr std::size_t half = quarter_n<V> / 2;
        const std::size_t within = i % quarter_n<V>;
        return i - within + 2 * (within % half) + (odd ? 1 : 0) + within / half * lanes_of<V>;
    }
};

/// low, high = a0 b0 a1 b1 ... of all lanes.
template <class V>
SORVO_INLINE void zip(V& low, V& high, V a, V b) {
    if constexpr (lanes_of<V> == 8) {
        const V even = zip_quarters_low(a, b);
        const V odd = zip_quarters_high(a, b);
        low = lower_halves(even, odd);
        high = upper_halves(even, odd);
    } else {
        low = shuffle<Zip<V, false>>(a, b);
        high = shuffle<Zip<V, true>>(a, b);
    }
}

/// The inverse of zip().
template <class V>
SORVO_INLINE void unzip(V& a, V& b, V low, V high) {
    if constexpr (lanes_of<V> == 8) {
        const V first = lower_halves(low, high);
        const V second = upper_halves(low, high);
        a = shuffle<UnzipQuarters<V, false>>(first, second);
        b = shuffle<UnzipQuarters<V, true>>(first, second);
    } else {
        a = shuffle<Unzip<V, false>>(low, high);
        b = shuffle<Unzip<V, true>>(low, high);
    }
}

/// dst = re0 im0 re1 im1 ...
SORVO_INLINE void store_interleaved(float* dst, FloatVec re, FloatVec im) {
    FloatVec low;
    FloatVec high;
    zip(low, high, re, im);
    store(dst, low);
    store(dst + lane_n, high);
}

/// The first `count` lanes of two vectors, one behind the other.
template <class V>
SORVO_INLINE void store_first(float* dst, V low, V high, std::size_t count) {
    float values[2 * lane_n];
    store(values, low);
    store(values + lane_n, high);
    for (std::size_t i = 0; i < count; ++i) {
        dst[i] = values[i];
    }
}

/// The first `count` pairs.
SORVO_INLINE void store_interleaved(float* dst, FloatVec re, FloatVec im, std::size_t count) {
    FloatVec low;
    FloatVec high;
    zip(low, high, re, im);
    store_first(dst, low, high, 2 * count);
}

SORVO_INLINE void store_separated(float* re, float* im, FloatVec low, FloatVec high) {
    FloatVec a;
    FloatVec b;
    unzip(a, b, low, high);
    store(re, a);
    store(im, b);
}

// Transposing. Four vectors hold four rows of as many quarters; transposed within quarters, vector
// i holds column i of each quarter.

template <class Wide, class V>
SORVO_INLINE void transpose_quarters_of_four(V& a, V& b, V& c, V& d) {
    const auto ab_low = reinterpret_cast<Wide>(zip_quarters_low(a, b));
    const auto ab_high = reinterpret_cast<Wide>(zip_quarters_high(a, b));
    const auto cd_low = reinterpret_cast<Wide>(zip_quarters_low(c, d));
    const auto cd_high = reinterpret_cast<Wide>(zip_quarters_high(c, d));
    a = reinterpret_cast<V>(zip_quarters_low(ab_low, cd_low));
    b = reinterpret_cast<V>(zip_quarters_high(ab_low, cd_low));
    c = reinterpret_cast<V>(zip_quarters_low(ab_high, cd_high));
    d = reinterpret_cast<V>(zip_quarters_high(ab_high, cd_high));
}

/// Floats, four in a quarter.
template <class V>
SORVO_INLINE void transpose_quarters(V& a, V& b, V& c, V& d) {
    transpose_quarters_of_four<Vec<double, sizeof(V) / sizeof(double)>>(a, b, c, d);
}

struct Concatenate {
    static constexpr std::size_t source(std::size_t i) { return i; }
};

template <class V>
SORVO_INLINE auto concatenate(V low, V high) {
    return shuffle<Concatenate>(low, high, std::make_index_sequence<2 * lanes_of<V>>());
}

/// A vector of quarters from p, p + step, p + 2 step, ...
template <class V = FloatVec>
SORVO_INLINE V load_quarters(const float* p, std::size_t step) {
    if constexpr (lanes_of<V> == 4) {
        return load<V>(p);
    } else {
        using Half = Vec<float, lanes_of<V> / 2>;
        return concatenate(load_quarters<Half>(p, step),
                           load_quarters<Half>(p + lanes_of<Half> / 4 * step, step));
    }
}

/// The same from p + offsets[0], p + offsets[4], p + offsets[8], ...
template <class V = FloatVec>
SORVO_INLINE V load_quarters(const float* p, const std::uint32_t* offsets) {
    if constexpr (lanes_of<V> == 4) {
        return load<V>(p + offsets[0]);
    } else {
        using Half = Vec<float, lanes_of<V> / 2>;
        return concatenate(load_quarters<Half>(p, offsets),
                           load_quarters<Half>(p, offsets + lanes_of<Half>));
    }
}

template <std::size_t first>
struct From {
    static constexpr std::size_t source(std::size_t i) { return first + i; }
};

/// The inverse of load_quarters().
template <std::size_t quarter = 0>
SORVO_INLINE void store_quarters(float* p, std::size_t step, FloatVec value) {
    store(p, shuffle<From<4 * quarter>>(value, value, std::make_index_sequence<4>()));
    if constexpr (4 * (quarter + 1) < lane_n) {
        store_quarters<quarter + 1>(p + step, step, value);
    }
}

// Transposing squares.

/// Elements along one side of the squares that transpose_square() moves.
template <class T>
constexpr std::size_t square_n = (lane_n < 8 ? 16 : 32) / sizeof(T);

/// In each half the lower or the upper quarter of a, then of b.
template <class V, bool upper>
struct QuartersOfHalves {
    static constexpr std::size_t source(std::size_t i) {
        constexpr std::size_t n = quarter_n<V>;
        return i / (2 * n) * (2 * n) + (upper ? n : 0) + i % n + i / n % 2 * lanes_of<V>;
    }
};

/// Vector i receives quarter i of each; there are as many vectors as quarters.
template <class V>
SORVO_INLINE void transpose_by_quarters(V& a, V& b) {
    const V low = lower_halves(a, b);
    b = upper_halves(a, b);
    a = low;
}

template <class V>
SORVO_INLINE void transpose_by_quarters(V& a, V& b, V& c, V& d) {
    const V ac_low = lower_halves(a, c);
    const V ac_high = upper_halves(a, c);
    const V bd_low = lower_halves(b, d);
    const V bd_high = upper_halves(b, d);
    a = shuffle<QuartersOfHalves<V, false>>(ac_low, bd_low);
    b = shuffle<QuartersOfHalves<V, true>>(ac_low, bd_low);
    c = shuffle<QuartersOfHalves<V, false>>(ac_high, bd_high);
    d = shuffle<QuartersOfHalves<V, true>>(ac_high, bd_high);
}

/// Loads row i of a square of n x n floats from address(i), and calls store_row(i, row) for the
/// rows of the transposed square; n is 4, 8 or 16.
template <std::size_t n, class Address, class StoreRow>
SORVO_INLINE void transpose_square(Address address, StoreRow store_row) {
    Vec<float, n> rows[n];
    for (std::size_t i = 0; i < n; ++i) {
        rows[i] = load<Vec<float, n>>(address(i));
    }
    for (std::size_t i = 0; i < n; i += 4) {
        transpose_quarters(rows[i], rows[i + 1], rows[i + 2], rows[i + 3]);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        if constexpr (n == 8) {
            transpose_by_quarters(rows[i], rows[i + 4]);
        } else if constexpr (n == 16) {
            transpose_by_quarters(rows[i], rows[i + 4], rows[i + 8], rows[i + 12]);
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        store_row(i, rows[i]);
    }
}

/// dst[i * dst_stride + j] = src[j * src_stride + i] for i and j below square_n<float>.
SORVO_INLINE void transpose_square(float* dst, std::ptrdiff_t dst_stride, const float* src,
                                   std::ptrdiff_t src_stride) {
    transpose_square<square_n<float>>(
        [&](std::size_t i)
            SORVO_INLINE_BODY { return src + static_cast<std::ptrdiff_t>(i) * src_stride; },
        [&](std::size_t i, auto row)
            SORVO_INLINE_BODY { store(dst + static_cast<std::ptrdiff_t>(i) * dst_stride, row); });
}

SORVO_INLINE void transpose_square(double* dst, std::ptrdiff_t dst_stride, const double* src,
                                   std::ptrdiff_t src_stride) {
    constexpr std::size_t n = square_n<double>;
    using Row = Vec<double, n>;
    Row rows[n];
    for (std::size_t i = 0; i < n; i += 2) {
        const Row x = load<Row>(src + static_cast<std::ptrdiff_t>(i) * src_stride);
        const Row y = load<Row>(src + static_cast<std::ptrdiff_t>(i + 1) * src_stride);
        rows[i] = zip_quarters_low(x, y);
        rows[i + 1] = zip_quarters_high(x, y);
    }
    for (std::ptrdiff_t i = 0; i < 2; ++i) {
        if constexpr (n == 2) {
            store(dst + i * dst_stride, rows[i]);
        } else {
            store(dst + i * dst_stride, lower_halves(rows[i], rows[i + 2]));
            store(dst + (i + 2) * dst_stride, upper_halves(rows[i], rows[i + 2]));
        }
    }
}

/// Lane i of the result is lane order[i] of x.
template <class V>
SORVO_INLINE V permute(V x, BitsVec order) {
    V result;
    for (std::size_t i = 0; i < lanes_of<V>; ++i) {
        result[i] = x[order[i]];
    }
    return result;
}

}  // namespace sorvo::audio::SORVO_LEVEL
