#include "fft_engine/kernels.h"

#include <algorithm>
#include <iterator>

#include "fft_engine/butterflies.h"
#include "fft_engine/vectors.h"

namespace sorvo::audio::kelpon::fft {
namespace {

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

// The instruction sets. Each `call` compiles one kernel for one level.

template <SimdLevel level>
struct InstructionSet {
    template <class Kernel, class... Arguments>
    static void call(Arguments... arguments) {
        Kernel::template run<4>(arguments...);
    }
};
#if defined(__x86_64__) && !defined(SORVO_AUDIO_GENERIC)
template <>
struct InstructionSet<SimdLevel::avx2> {
    template <class Kernel, class... Arguments>
    [[gnu::target("avx2")]] static void call(Arguments... arguments) {
        Kernel::template run<8>(arguments...);
    }
};
template <>
struct InstructionSet<SimdLevel::avx512> {
    template <class Kernel, class... Arguments>
    [[gnu::target("avx512f")]] static void call(Arguments... arguments) {
        Kernel::template run<16>(arguments...);
    }
};
#endif

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

#define SORVO_MAKE_KERNELS(level, ...) make_kernels<InstructionSet<SimdLevel::level>>(),
constexpr Kernels level_kernels[] = {SORVO_SIMD_LEVELS(SORVO_MAKE_KERNELS, )};
#undef SORVO_MAKE_KERNELS

}  // namespace

const Kernels& kernels(SimdLevel level) {
    return level_kernels[static_cast<std::size_t>(level)];
}

}  // namespace sorvo::audio::kelpon::fft
