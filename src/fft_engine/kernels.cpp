#include "fft_engine/kernels.h"

#include <algorithm>
#include <cstring>

#include "fft_engine/butterflies.h"

// Vectors are passed only between functions that are inlined into one another, so how a call would
// pass them does not matter.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace sorvo::audio::kelpon::fft {
namespace {

template <int width>
struct VectorOf {
    typedef float type __attribute__((vector_size(width * sizeof(float))));
};
template <int width>
using Vector = typename VectorOf<width>::type;

template <int width>
[[gnu::always_inline]] inline Vector<width> load(const float* from) {
    Vector<width> vector;
    std::memcpy(&vector, from, sizeof(vector));
    return vector;
}

template <class V>
[[gnu::always_inline]] inline void store(float* to, const V& vector) {
    std::memcpy(to, &vector, sizeof(vector));
}

template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> load_row(const float* row) {
    return {load<width>(row), load<width>(row + lane_n)};
}

template <class V>
[[gnu::always_inline]] inline void store_row(float* row, const Complex<V>& value) {
    store(row, value.re);
    store(row + lane_n, value.im);
}

/// a0 b0 a1 b1 ... of the lower (zip_low) or upper (zip_high) halves; even and odd undo them.
[[gnu::always_inline]] inline Vector<4> zip_low(const Vector<4>& a, const Vector<4>& b) {
    return __builtin_shufflevector(a, b, 0, 4, 1, 5);
}
[[gnu::always_inline]] inline Vector<4> zip_high(const Vector<4>& a, const Vector<4>& b) {
    return __builtin_shufflevector(a, b, 2, 6, 3, 7);
}
[[gnu::always_inline]] inline Vector<4> even(const Vector<4>& a, const Vector<4>& b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6);
}
[[gnu::always_inline]] inline Vector<4> odd(const Vector<4>& a, const Vector<4>& b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7);
}
[[gnu::always_inline]] inline Vector<8> zip_low(const Vector<8>& a, const Vector<8>& b) {
    return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}
[[gnu::always_inline]] inline Vector<8> zip_high(const Vector<8>& a, const Vector<8>& b) {
    return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}
[[gnu::always_inline]] inline Vector<8> even(const Vector<8>& a, const Vector<8>& b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14);
}
[[gnu::always_inline]] inline Vector<8> odd(const Vector<8>& a, const Vector<8>& b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15);
}
[[gnu::always_inline]] inline Vector<16> zip_low(const Vector<16>& a, const Vector<16>& b) {
    return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}
[[gnu::always_inline]] inline Vector<16> zip_high(const Vector<16>& a, const Vector<16>& b) {
    return __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15,
                                   31);
}
[[gnu::always_inline]] inline Vector<16> even(const Vector<16>& a, const Vector<16>& b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}
[[gnu::always_inline]] inline Vector<16> odd(const Vector<16>& a, const Vector<16>& b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
}

// Access to element i of each kind of sequence, alone and `width` at once.

template <class Real>
[[gnu::always_inline]] inline Complex<float> get(const Real* in, std::size_t i) {
    return {static_cast<float>(in[i]), 0.0F};
}
[[gnu::always_inline]] inline Complex<float> get(const std::complex<float>* in, std::size_t i) {
    return {in[i].real(), in[i].imag()};
}
[[gnu::always_inline]] inline Complex<float> get(ConstPlanes in, std::size_t i) {
    return {in.re[i], in.im[i]};
}

template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> get_vector(const short* in, std::size_t i) {
    float values[width];
    for (std::size_t lane = 0; lane < width; ++lane)
        values[lane] = static_cast<float>(in[i + lane]);
    return {load<width>(values), Vector<width>{}};
}
template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> get_vector(const float* in, std::size_t i) {
    return {load<width>(in + i), Vector<width>{}};
}
template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> get_vector(const std::complex<float>* in,
                                                                std::size_t i) {
    const float* const pairs = reinterpret_cast<const float*>(in + i);
    const Vector<width> low = load<width>(pairs);
    const Vector<width> high = load<width>(pairs + width);
    return {even(low, high), odd(low, high)};
}
template <int width>
[[gnu::always_inline]] inline Complex<Vector<width>> get_vector(ConstPlanes in, std::size_t i) {
    return {load<width>(in.re + i), load<width>(in.im + i)};
}

[[gnu::always_inline]] inline void put(std::complex<float>* out, std::size_t i,
                                       const Complex<float>& value) {
    out[i] = {value.re, value.im};
}
[[gnu::always_inline]] inline void put(Planes out, std::size_t i, const Complex<float>& value) {
    out.re[i] = value.re;
    out.im[i] = value.im;
}
template <class V>
[[gnu::always_inline]] inline void put_vector(std::complex<float>* out, std::size_t i,
                                              const Complex<V>& value) {
    float* const pairs = reinterpret_cast<float*>(out + i);
    store(pairs, zip_low(value.re, value.im));
    store(pairs + sizeof(V) / sizeof(float), zip_high(value.re, value.im));
}
template <class V>
[[gnu::always_inline]] inline void put_vector(Planes out, std::size_t i, const Complex<V>& value) {
    store(out.re + i, value.re);
    store(out.im + i, value.im);
}

template <class V>
[[gnu::always_inline]] inline Complex<V> swap_if(bool swapped, const Complex<V>& value) {
    return swapped ? Complex<V>{value.im, value.re} : value;
}

struct Load {
    template <int width, class In>
    [[gnu::always_inline]] static void run(float* rows, In in, const BlockShape& shape,
                                           const unsigned* index, bool swapped) {
        float* const re = rows + (swapped ? lane_n : 0);
        float* const im = rows + (swapped ? 0 : lane_n);
        for (std::size_t r = 0; r < shape.row_n; ++r) {
            const std::size_t start = shape.first + shape.stride * index[r];
            const std::size_t row = r * row_floats;
            if (start + lane_n <= shape.n) {
                for (std::size_t lane = 0; lane < lane_n; lane += width) {
                    const auto value = get_vector<width>(in, start + lane);
                    store(re + row + lane, value.re);
                    store(im + row + lane, value.im);
                }
                continue;
            }
            for (std::size_t lane = 0; lane < lane_n; ++lane) {
                const std::size_t i = start + lane;
                const Complex<float> value = i < shape.n ? get(in, i) : Complex<float>{0.0F, 0.0F};
                re[row + lane] = value.re;
                im[row + lane] = value.im;
            }
        }
    }
};

struct Store {
    template <int width, class Out>
    [[gnu::always_inline]] static void run(Out out, const float* rows, const BlockShape& shape,
                                           float scale, bool swapped) {
        const float* const re = rows + (swapped ? lane_n : 0);
        const float* const im = rows + (swapped ? 0 : lane_n);
        for (std::size_t r = 0; r < shape.row_n; ++r) {
            const std::size_t start = shape.first + shape.stride * r;
            const std::size_t row = r * row_floats;
            if (start + lane_n <= shape.n) {
                for (std::size_t lane = 0; lane < lane_n; lane += width) {
                    const Complex<Vector<width>> value = {load<width>(re + row + lane) * scale,
                                                          load<width>(im + row + lane) * scale};
                    put_vector(out, start + lane, value);
                }
                continue;
            }
            for (std::size_t lane = 0; start + lane < shape.n; ++lane) {
                put(out, start + lane,
                    Complex<float>{re[row + lane] * scale, im[row + lane] * scale});
            }
        }
    }
};

struct MultiplyChirpIn {
    template <int width, class In>
    [[gnu::always_inline]] static void run(Planes product, In in, ConstPlanes chirp, std::size_t n,
                                           bool swapped) {
        std::size_t i = 0;
        for (; i + width <= n; i += width) {
            put_vector(product, i,
                       swap_if(swapped, get_vector<width>(in, i)) * get_vector<width>(chirp, i));
        }
        for (; i < n; ++i) put(product, i, swap_if(swapped, get(in, i)) * get(chirp, i));
        for (; i < round_up_to_lanes(n); ++i) put(product, i, Complex<float>{0.0F, 0.0F});
    }
};

struct MultiplyChirpOut {
    template <int width, class Out>
    [[gnu::always_inline]] static void run(Out out, ConstPlanes in, ConstPlanes chirp,
                                           std::size_t n, bool swapped) {
        std::size_t i = 0;
        for (; i + width <= n; i += width) {
            put_vector(out, i,
                       swap_if(swapped, get_vector<width>(in, i) * get_vector<width>(chirp, i)));
        }
        for (; i < n; ++i) put(out, i, swap_if(swapped, get(in, i) * get(chirp, i)));
    }
};

struct Multiply {
    template <int width>
    [[gnu::always_inline]] static void run(Planes product, ConstPlanes a, ConstPlanes b,
                                           std::size_t n) {
        for (std::size_t i = 0; i < n; i += width) {
            put_vector(product, i, get_vector<width>(a, i) * get_vector<width>(b, i));
        }
    }
};

struct Transpose {
    template <int width>
    [[gnu::always_inline]] static void run(const TransposeTarget& target,
                                           const TransposeSource& source) {
        for (const bool imaginary : {false, true}) {
            const float* const from = source.first_row + (imaginary ? source.im_offset : 0);
            float* const to = target.first_row + (imaginary ? target.im_offset : 0);
            for (std::size_t row = 0; row < lane_n; row += width) {
                for (std::size_t column = 0; column < target.row_n; column += width) {
                    // Below the last row that row is read again; the values go where nobody looks.
                    const float* from_row =
                        from + std::min(row, source.row_n - 1) * source.row_stride + column;
                    Vector<width> tile[width];
#pragma GCC unroll 16
                    for (std::size_t i = 0; i < width; ++i) {
                        tile[i] = load<width>(from_row);
                        if (row + i + 1 < source.row_n) from_row += source.row_stride;
                    }
                    transpose_tile(tile);
#pragma GCC unroll 16
                    for (std::size_t i = 0; i < width; ++i) {
                        if (column + i >= target.row_n) break;
                        store(to + target.index[column + i] * target.row_stride + row, tile[i]);
                    }
                }
            }
        }
    }

  private:
    /// Zipping the first half of the rows with the second shifts the bits of each value's place
    /// round by one; after half of all places the rows' bits and the columns' bits have changed
    /// roles.
    template <std::size_t width>
    [[gnu::always_inline]] static void transpose_tile(Vector<width> (&tile)[width]) {
#pragma GCC unroll 16
        for (std::size_t rounds = width; rounds > 1; rounds /= 2) {
            Vector<width> zipped[width];
#pragma GCC unroll 16
            for (std::size_t i = 0; i < width / 2; ++i) {
                zipped[2 * i] = zip_low(tile[i], tile[i + width / 2]);
                zipped[2 * i + 1] = zip_high(tile[i], tile[i + width / 2]);
            }
            std::copy(std::begin(zipped), std::end(zipped), std::begin(tile));
        }
    }
};

/// Value x times twiddle number i, for the lanes from `lane` on.
template <Twiddles kind, class V>
[[gnu::always_inline]] inline Complex<V> apply_twiddle(const Complex<V>& x, const float* twiddles,
                                                       std::size_t i, std::size_t lane) {
    if constexpr (kind == Twiddles::per_row) {
        return x * Complex<float>{twiddles[2 * i], twiddles[2 * i + 1]};
    } else if constexpr (kind == Twiddles::per_lane) {
        return x * load_row<sizeof(V) / sizeof(float)>(twiddles + i * row_floats + lane);
    } else {
        return x;
    }
}

template <int radix, Twiddles kind>
struct ButterflyStage {
    template <int width>
    [[gnu::always_inline]] static void run(float* rows, const float* twiddles,
                                           const StageShape& shape) {
        const std::size_t step = shape.span * row_floats;
        for (std::size_t block = 0; block < shape.block_n; ++block) {
            float* const base = rows + block * radix * step;
            for (std::size_t k = 0; k < shape.span; ++k) {
                for (std::size_t lane = 0; lane < lane_n; lane += width) {
                    float* const row = base + k * row_floats + lane;
                    Complex<Vector<width>> x[radix];
                    x[0] = load_row<width>(row);
#pragma GCC unroll 16
                    for (std::size_t a = 1; a < radix; ++a) {
                        x[a] = apply_twiddle<kind>(load_row<width>(row + a * step), twiddles,
                                                   k * (radix - 1) + a - 1, lane);
                    }
                    butterfly(x);
#pragma GCC unroll 16
                    for (std::size_t a = 0; a < radix; ++a) store_row(row + a * step, x[a]);
                }
            }
        }
    }
};

/// A stage of any odd radix by direct summation, inputs and outputs a and radix - a sharing
/// products.
template <Twiddles kind>
struct DirectStage {
    template <int width>
    [[gnu::always_inline]] static void run(float* rows, const float* twiddles,
                                           const StageShape& shape) {
        const std::size_t radix = shape.radix;
        const std::size_t step = shape.span * row_floats;
        for (std::size_t i = 0; i < shape.block_n * shape.span; ++i) {
            const std::size_t k = i % shape.span;
            for (std::size_t lane = 0; lane < lane_n; lane += width) {
                float* const row = rows + (i / shape.span * radix * step) + k * row_floats + lane;
                Complex<Vector<width>> sum[max_direct_radix / 2 + 1];
                Complex<Vector<width>> difference[max_direct_radix / 2 + 1];
                const Complex<Vector<width>> first = load_row<width>(row);
                Complex<Vector<width>> total = first;
                for (std::size_t a = 1; a <= radix / 2; ++a) {
                    const std::size_t b = radix - a;
                    const auto low = apply_twiddle<kind>(load_row<width>(row + a * step), twiddles,
                                                         k * (radix - 1) + a - 1, lane);
                    const auto high = apply_twiddle<kind>(load_row<width>(row + b * step), twiddles,
                                                          k * (radix - 1) + b - 1, lane);
                    sum[a] = low + high;
                    difference[a] = low - high;
                    total = total + sum[a];
                }
                store_row(row, total);
                for (std::size_t b = 1; b <= radix / 2; ++b) {
                    Complex<Vector<width>> even_part = first;
                    Complex<Vector<width>> odd_part = {};
                    for (std::size_t a = 1, j = b; a <= radix / 2; ++a) {
                        const float c = shape.roots[2 * j];
                        const float s = shape.roots[2 * j + 1];
                        even_part = {even_part.re + sum[a].re * c, even_part.im + sum[a].im * c};
                        odd_part = {odd_part.re + difference[a].re * s,
                                    odd_part.im + difference[a].im * s};
                        j += b;
                        if (j >= radix) j -= radix;
                    }
                    const Complex<Vector<width>> turned = {-odd_part.im, odd_part.re};
                    store_row(row + b * step, even_part + turned);
                    store_row(row + (radix - b) * step, even_part - turned);
                }
            }
        }
    }
};

template <Twiddles kind>
struct TwiddleStage {
    template <int width>
    [[gnu::always_inline]] static void run(float* rows, const float* twiddles,
                                           const StageShape& shape) {
        const std::size_t radix = shape.radix;
        for (std::size_t block = 0; block < shape.block_n; ++block) {
            for (std::size_t a = 1; a < radix; ++a) {
                for (std::size_t k = 0; k < shape.span; ++k) {
                    float* const row = rows + ((block * radix + a) * shape.span + k) * row_floats;
                    for (std::size_t lane = 0; lane < lane_n; lane += width) {
                        store_row(row + lane,
                                  apply_twiddle<kind>(load_row<width>(row + lane), twiddles,
                                                      k * (radix - 1) + a - 1, lane));
                    }
                }
            }
        }
    }
};

// The instruction sets. Each `call` compiles one kernel for one of them.

struct Baseline {
    template <class Kernel, class... Arguments>
    static void call(Arguments... arguments) {
        Kernel::template run<4>(arguments...);
    }
};
struct Avx2 {
    template <class Kernel, class... Arguments>
    [[gnu::target("avx2")]] static void call(Arguments... arguments) {
        Kernel::template run<8>(arguments...);
    }
};
struct Avx512 {
    template <class Kernel, class... Arguments>
    [[gnu::target("avx512f")]] static void call(Arguments... arguments) {
        Kernel::template run<16>(arguments...);
    }
};

template <class Level, class In>
constexpr InputKernels<In> make_input_kernels() {
    return {&Level::template call<Load>, &Level::template call<MultiplyChirpIn>};
}

template <class Level, class Out>
constexpr OutputKernels<Out> make_output_kernels() {
    return {&Level::template call<Store>, &Level::template call<MultiplyChirpOut>};
}

template <class Level, Twiddles kind>
constexpr std::array<StageKernel, max_butterfly_radix + 1> make_butterflies() {
    return {nullptr,
            nullptr,
            &Level::template call<ButterflyStage<2, kind>>,
            &Level::template call<ButterflyStage<3, kind>>,
            &Level::template call<ButterflyStage<4, kind>>,
            &Level::template call<ButterflyStage<5, kind>>,
            nullptr,
            &Level::template call<ButterflyStage<7, kind>>,
            &Level::template call<ButterflyStage<8, kind>>};
}

template <class Level>
constexpr Kernels make_kernels() {
    constexpr Twiddles none = Twiddles::none;
    constexpr Twiddles per_row = Twiddles::per_row;
    constexpr Twiddles per_lane = Twiddles::per_lane;
    return {
        {make_input_kernels<Level, const short*>(), make_input_kernels<Level, const float*>(),
         make_input_kernels<Level, const std::complex<float>*>(),
         make_input_kernels<Level, ConstPlanes>()},
        {make_output_kernels<Level, std::complex<float>*>(), make_output_kernels<Level, Planes>()},
        &Level::template call<Transpose>,
        &Level::template call<Multiply>,
        {make_butterflies<Level, none>(), make_butterflies<Level, per_row>(),
         make_butterflies<Level, per_lane>()},
        {&Level::template call<DirectStage<none>>, &Level::template call<DirectStage<per_row>>,
         &Level::template call<DirectStage<per_lane>>},
        {nullptr, &Level::template call<TwiddleStage<per_row>>,
         &Level::template call<TwiddleStage<per_lane>>},
    };
}

constexpr Kernels level_kernels[] = {make_kernels<Baseline>(), make_kernels<Avx2>(),
                                     make_kernels<Avx512>()};

}  // namespace

const Kernels& kernels(CpuLevel level) {
    return level_kernels[static_cast<std::size_t>(level)];
}

}  // namespace sorvo::audio::kelpon::fft
