#include "fft_engine/kernels.h"

#include "fft_engine/butterflies.h"
#include "fft_engine/sequences.h"

namespace sorvo::audio::kelpon::fft::SORVO_LEVEL {
namespace {

static_assert(row_lane_n % lane_n == 0);

/// Where the lanes in use end; a constant where a vector holds a row.
SORVO_INLINE std::size_t end_of(std::size_t used_lane_n) {
    return lane_n < row_lane_n ? used_lane_n : row_lane_n;
}

/// Whether the sequence has all values of the vectors of a row, part-filled ones too.
SORVO_INLINE bool has_whole_vectors(std::size_t first, const BlockShape& shape) {
    return first + (end_of(shape.used_lane_n) + lane_n - 1) / lane_n * lane_n <= shape.n;
}

/// Calls visit(lane, V{}) for vectors and single values of a row whose first value is number
/// `first` of the sequence: whole vectors where the sequence has them, even if the lanes in use end
/// before, then quarters, then values.
template <class Visitor>
SORVO_INLINE void for_each_part(std::size_t first, const BlockShape& shape, Visitor visit) {
    const std::size_t end = end_of(shape.used_lane_n);
    std::size_t lane = 0;
    if (has_whole_vectors(first, shape)) {
        for (; lane < end; lane += lane_n) visit(lane, FloatVec{});
        return;
    }
    const std::size_t used = shape.used_lane_n;
    for (; lane < used && first + lane + lane_n <= shape.n; lane += lane_n) visit(lane, FloatVec{});
    for (; lane_n > 4 && lane < used && first + lane + 4 <= shape.n; lane += 4) {
        visit(lane, QuarterVec{});
    }
    for (; lane < used && first + lane < shape.n; ++lane) visit(lane, 0.0F);
}

// Shapes are copied first: for all the compiler knows, what is stored could change the originals.

template <class In>
void load_block(float* rows, In in, const BlockShape& block, const unsigned* index, bool swapped) {
    const BlockShape shape = block;
    float* const re = rows + (swapped ? row_lane_n : 0);
    float* const im = rows + (swapped ? 0 : row_lane_n);
    for (std::size_t r = 0; r < shape.row_n; ++r) {
        const std::size_t first = shape.first + shape.stride * index[r];
        const std::size_t row = r * row_floats;
        if (!has_whole_vectors(first, shape)) {
            // What was left in the other lanes could be denormal numbers, which make processors
            // slow.
            store_row(rows + row + (shape.used_lane_n - 1) / lane_n * lane_n, ComplexVec{});
        }
        for_each_part(first, shape, [&](std::size_t lane, auto kind) SORVO_INLINE_BODY {
            using V = decltype(kind);
            if constexpr (sizeof(V) == sizeof(float)) {
                const Complex<float> value = get(in, first + lane);
                re[row + lane] = value.re;
                im[row + lane] = value.im;
            } else {
                const Complex<V> value = get_vector<V>(in, first + lane);
                store(re + row + lane, value.re);
                store(im + row + lane, value.im);
            }
        });
    }
}

template <class Out>
void store_block(Out out, const float* rows, const BlockShape& block, float scale, bool swapped) {
    const BlockShape shape = block;
    const float* const re = rows + (swapped ? row_lane_n : 0);
    const float* const im = rows + (swapped ? 0 : row_lane_n);
    for (std::size_t r = 0; r < shape.row_n; ++r) {
        const std::size_t first = shape.first + shape.stride * r;
        const std::size_t row = r * row_floats;
        for_each_part(first, shape, [&](std::size_t lane, auto kind) SORVO_INLINE_BODY {
            using V = decltype(kind);
            if constexpr (sizeof(V) == sizeof(float)) {
                put(out, first + lane,
                    Complex<float>{re[row + lane] * scale, im[row + lane] * scale});
            } else {
                put_vector(
                    out, first + lane,
                    Complex<V>{load<V>(re + row + lane) * scale, load<V>(im + row + lane) * scale});
            }
        });
    }
}

template <class In>
void multiply_chirp_in(Planes product, In in, ConstPlanes chirp, std::size_t n, bool swapped) {
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        put_vector(product, i,
                   get_vector<FloatVec>(chirp, i) * swap_if(swapped, get_vector<FloatVec>(in, i)));
    }
    for (; i < n; ++i) put(product, i, get(chirp, i) * swap_if(swapped, get(in, i)));
    for (; i < round_up_to_lanes(n); ++i) put(product, i, Complex<float>{0.0F, 0.0F});
}

template <class Out>
void multiply_chirp_out(Out out, ConstPlanes in, ConstPlanes chirp, std::size_t n, bool swapped) {
    std::size_t i = 0;
    for (; i + lane_n <= n; i += lane_n) {
        put_vector(out, i,
                   swap_if(swapped, get_vector<FloatVec>(chirp, i) * get_vector<FloatVec>(in, i)));
    }
    for (; i < n; ++i) put(out, i, swap_if(swapped, get(chirp, i) * get(in, i)));
}

void multiply(Planes product, ConstPlanes a, ConstPlanes b, std::size_t n) {
    for (std::size_t i = 0; i < n; i += lane_n) {
        put_vector(product, i, get_vector<FloatVec>(a, i) * get_vector<FloatVec>(b, i));
    }
}

void transpose(const TransposeTarget& to_rows, const TransposeSource& from_rows) {
    const TransposeTarget target = to_rows;
    const TransposeSource source = from_rows;
    constexpr std::size_t side = lane_n;
    for (const bool imaginary : {false, true}) {
        const float* const from = source.first_row + (imaginary ? source.im_offset : 0);
        float* const to = target.first_row + (imaginary ? target.im_offset : 0);
        const auto move_square = [=](std::size_t row, std::size_t column,
                                     auto step_after) SORVO_INLINE_BODY {
            const float* next = from + row * source.row_stride + column;
            transpose_square<side>(
                [&](std::size_t i) SORVO_INLINE_BODY {
                    const float* const current = next;
                    next += step_after(row + i);
                    return current;
                },
                [=](std::size_t i, auto values) SORVO_INLINE_BODY {
                    if (column + i < target.row_n) {
                        store(to + target.index[column + i] * target.row_stride + row, values);
                    }
                });
        };
        for (std::size_t column = 0; column < target.row_n; column += side) {
            std::size_t row = 0;
            for (; row + side <= source.row_n; row += side) {
                move_square(row, column,
                            [=](std::size_t) SORVO_INLINE_BODY { return source.row_stride; });
            }
            if (row < source.row_n) {
                // Below the last row that row is read again; the values go where nobody looks.
                move_square(row, column, [=](std::size_t i) SORVO_INLINE_BODY {
                    return i + 1 < source.row_n ? source.row_stride : 0;
                });
            }
        }
    }
}

/// Value x times twiddle number i, for the lanes from `lane` on.
template <Twiddles kind>
SORVO_INLINE ComplexVec apply_twiddle(ComplexVec x, const float* twiddles, std::size_t i,
                                      std::size_t lane) {
    if constexpr (kind == Twiddles::per_row) {
        return load_complex(twiddles, i) * x;
    } else if constexpr (kind == Twiddles::per_lane) {
        return load_row(twiddles + i * row_floats + lane) * x;
    } else {
        return x;
    }
}

template <int radix, Twiddles kind>
void butterfly_stage(float* rows, const float* twiddles, const StageShape& shape,
                     std::size_t used_lane_n, float* /*scratch*/) {
    const std::size_t step = shape.span * row_floats;
    for (std::size_t block = 0; block < shape.block_n; ++block) {
        float* const base = rows + block * radix * step;
        for (std::size_t k = 0; k < shape.span; ++k) {
            for (std::size_t lane = 0; lane < end_of(used_lane_n); lane += lane_n) {
                float* const row = base + k * row_floats + lane;
                ComplexVec x[radix];
                x[0] = load_row(row);
#pragma GCC unroll 16
                for (std::size_t a = 1; a < radix; ++a) {
                    x[a] = apply_twiddle<kind>(load_row(row + a * step), twiddles,
                                               k * (radix - 1) + a - 1, lane);
                }
                butterfly(x);
#pragma GCC unroll 16
                for (std::size_t a = 0; a < radix; ++a) store_row(row + a * step, x[a]);
            }
        }
    }
}

/// A stage of any odd radix by direct summation, inputs and outputs a and radix - a sharing
/// products. The scratch holds their sums and differences, a row each.
template <Twiddles kind>
void direct_stage(float* rows, const float* twiddles, const StageShape& shape,
                  std::size_t used_lane_n, float* scratch) {
    const std::size_t radix = shape.radix;
    const std::size_t step = shape.span * row_floats;
    float* const sums = scratch;
    float* const differences = scratch + radix / 2 * row_floats;
    for (std::size_t i = 0; i < shape.block_n * shape.span; ++i) {
        const std::size_t k = i % shape.span;
        for (std::size_t lane = 0; lane < end_of(used_lane_n); lane += lane_n) {
            float* const row = rows + (i / shape.span * radix * step) + k * row_floats + lane;
            const ComplexVec first = load_row(row);
            ComplexVec total = first;
            for (std::size_t a = 1; a <= radix / 2; ++a) {
                const std::size_t b = radix - a;
                const auto low = apply_twiddle<kind>(load_row(row + a * step), twiddles,
                                                     k * (radix - 1) + a - 1, lane);
                const auto high = apply_twiddle<kind>(load_row(row + b * step), twiddles,
                                                      k * (radix - 1) + b - 1, lane);
                const ComplexVec sum = low + high;
                store_row(sums + (a - 1) * row_floats, sum);
                store_row(differences + (a - 1) * row_floats, low - high);
                total = total + sum;
            }
            store_row(row, total);
            for (std::size_t b = 1; b <= radix / 2; ++b) {
                ComplexVec even_part = first;
                ComplexVec odd_part = {};
                for (std::size_t a = 1, j = b; a <= radix / 2; ++a) {
                    const Complex<float> root = load_complex(shape.roots, j);
                    const ComplexVec sum = load_row(sums + (a - 1) * row_floats);
                    const ComplexVec difference = load_row(differences + (a - 1) * row_floats);
                    even_part = {even_part.re + sum.re * root.re, even_part.im + sum.im * root.re};
                    odd_part = {odd_part.re + difference.re * root.im,
                                odd_part.im + difference.im * root.im};
                    j += b;
                    if (j >= radix) j -= radix;
                }
                const ComplexVec turned = {-odd_part.im, odd_part.re};
                store_row(row + b * step, even_part + turned);
                store_row(row + (radix - b) * step, even_part - turned);
            }
        }
    }
}

template <Twiddles kind>
void twiddle_stage(float* rows, const float* twiddles, const StageShape& shape,
                   std::size_t used_lane_n, float* /*scratch*/) {
    const std::size_t radix = shape.radix;
    for (std::size_t block = 0; block < shape.block_n; ++block) {
        for (std::size_t a = 1; a < radix; ++a) {
            for (std::size_t k = 0; k < shape.span; ++k) {
                float* const row = rows + ((block * radix + a) * shape.span + k) * row_floats;
                for (std::size_t lane = 0; lane < end_of(used_lane_n); lane += lane_n) {
                    store_row(row + lane, apply_twiddle<kind>(load_row(row + lane), twiddles,
                                                              k * (radix - 1) + a - 1, lane));
                }
            }
        }
    }
}

template <class In>
constexpr InputKernels<In> make_input_kernels() {
    return {load_block<In>, multiply_chirp_in<In>};
}

template <class Out>
constexpr OutputKernels<Out> make_output_kernels() {
    return {store_block<Out>, multiply_chirp_out<Out>};
}

template <Twiddles kind>
constexpr StageKernels make_stage_kernels() {
    return {{nullptr, nullptr, butterfly_stage<2, kind>, butterfly_stage<3, kind>,
             butterfly_stage<4, kind>, butterfly_stage<5, kind>, nullptr, butterfly_stage<7, kind>,
             butterfly_stage<8, kind>},
            direct_stage<kind>,
            kind == Twiddles::none ? nullptr : twiddle_stage<kind>};
}

}  // namespace

const Kernels kernels = {
    {make_input_kernels<const short*>(), make_input_kernels<const float*>(),
     make_input_kernels<const std::complex<float>*>(), make_input_kernels<ConstPlanes>()},
    {make_output_kernels<std::complex<float>*>(), make_output_kernels<Planes>()},
    transpose,
    multiply,
    {make_stage_kernels<Twiddles::none>(), make_stage_kernels<Twiddles::per_row>(),
     make_stage_kernels<Twiddles::per_lane>()}};

}  // namespace sorvo::audio::kelpon::fft::SORVO_LEVEL
