// One transform of any other length with its own elements as lanes: the sums of fft_general.
//
// 1. Row r is the transform of the elements r, r + R, r + 2 R, ... for each residue r mod R: the
//    inner stages. Lanes are neighbouring residues, which are neighbours in the input; the results
//    are transposed. Or, if rows are direct transforms of a prime length and too few to fill the
//    lanes, one row after the other with its outputs as lanes.
//    If all residues fill one pack at most, the first of the outer stages takes its rows right out
//    of the lanes: they are in the order of the rows then.
// 2. The outer stages join rows in place; lanes are neighbouring outputs. Rows stay apart, padded:
//    closed up, most loads would span two stores that have not reached the cache.
//    Elements are kept in groups (lane_groups.inl), and so are the twiddles of a stage: all that a
//    group of columns takes, in the order of the arithmetic.
// 3. The outermost stage delivers its outputs to their places.
//
// What is left out of the sums is what lane_fft_general.inl leaves out; data must be finite. The
// result is written after all input is read: it may take its place.
#pragma once

#include "fft/fft_plan.h"
#include "fft/lane_fft_general.inl"
#include "fft/lane_groups.inl"
#include "fft/lane_moves.inl"
#include "fft/single_kernels.h"
#include "util/lanes.inl"

namespace sorvo::audio {
namespace {

SORVO_INLINE Pack load_element(const float* src, const Pack*) {
    return load(src);
}

SORVO_INLINE Complex load_element(const float* src, const Complex*) {
    Complex value;
    separate(value.re, value.im, load(src), load(src + lane_n));
    return value;
}

SORVO_INLINE Pack broadcast_element(const float* src, const Pack*) {
    return broadcast(src[0]);
}

SORVO_INLINE Complex broadcast_element(const float* src, const Complex*) {
    return {broadcast(src[0]), broadcast(src[1])};
}

/// What becomes of a sum.
struct Unscaled {
    SORVO_INLINE Complex operator()(Complex sum) const { return sum; }
};

struct Divided {
    Pack divisor;

    SORVO_INLINE Complex operator()(Complex sum) const {
        return {sum.re / divisor, sum.im / divisor};
    }
};

/// The input: real (Pack) or complex elements, in memory one after the other.
template <class T>
class Elements {
  public:
    using Value = T;

    /// `tail` is room for single_tail_n floats: the last elements again, with zeros behind them.
    Elements(const float* src, std::size_t n, float* tail)
        : src_(src), tail_(tail), tail_start_(n < lane_n ? 0 : n - lane_n) {
        for (std::size_t i = 0; i < 2 * float_n; ++i) {
            store(tail + i * lane_n, Pack{});
        }
        if (n >= lane_n) {
            for (std::size_t i = 0; i < float_n; ++i) {
                store(tail + i * lane_n, load(src + tail_start_ * float_n + i * lane_n));
            }
        } else {
            for (std::size_t i = 0; i < n * float_n; ++i) {
                tail[i] = src[i];
            }
        }
    }

    /// The elements i, i + 1, ... in the lanes.
    SORVO_INLINE Value run(std::size_t i) const {
        const float* const from =
            i < tail_start_ ? src_ + i * float_n : tail_ + (i - tail_start_) * float_n;
        return load_element(from, static_cast<Value*>(nullptr));
    }

    /// Element i in all lanes.
    SORVO_INLINE Value at(std::size_t i) const {
        return broadcast_element(src_ + i * float_n, static_cast<Value*>(nullptr));
    }

  private:
    static constexpr std::size_t float_n = is_real(static_cast<T*>(nullptr)) ? 1 : 2;

    const float* src_;
    const float* tail_;
    std::size_t tail_start_;
};

/// The input of the transforms of the residues first, first + 1, ...
template <class T>
struct ResidueInput {
    using Value = T;

    const Elements<T>& elements;
    std::size_t first;

    SORVO_INLINE Value operator()(std::size_t i) const { return elements.run(first + i); }
};

/// An order of lanes: lane i of the result of in_order() is lane order[i] of x.
#if defined(__AVX512F__)

using LaneOrder = __m512i;

SORVO_INLINE LaneOrder load_order(const std::uint32_t* order) {
    return _mm512_loadu_si512(order);
}

SORVO_INLINE Pack in_order(Pack x, LaneOrder order) {
    return _mm512_permutexvar_ps(order, x);
}

#elif defined(__AVX2__)

using LaneOrder = __m256i;

SORVO_INLINE LaneOrder load_order(const std::uint32_t* order) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(order));
}

SORVO_INLINE Pack in_order(Pack x, LaneOrder order) {
    return _mm256_permutevar8x32_ps(x, order);
}

#else

using LaneOrder = const std::uint32_t*;

SORVO_INLINE LaneOrder load_order(const std::uint32_t* order) {
    return order;
}

SORVO_INLINE Pack in_order(Pack x, LaneOrder order) {
    return Pack{x[order[0]], x[order[1]], x[order[2]], x[order[3]]};
}

#endif

SORVO_INLINE Complex in_order(Complex x, LaneOrder order) {
    return {in_order(x.re, order), in_order(x.im, order)};
}

/// The input of the transforms of all residues, in the order of their rows.
template <class T>
struct RowInput {
    using Value = T;

    const Elements<T>& elements;
    LaneOrder order;

    SORVO_INLINE Value operator()(std::size_t i) const { return in_order(elements.run(i), order); }
};

/// lane_n elements from element k on of four transforms in the lanes: the real (part 0) or
/// imaginary parts of lane `lane` and the next ones.
SORVO_INLINE void turn_rows(Pack* rows, const Pack* x, std::size_t k, std::size_t part,
                            std::size_t lane) {
    constexpr std::size_t hop = 2 * lane_n;
    const float* const from = reinterpret_cast<const float*>(x) + k * hop + part * lane_n + lane;
    for (std::size_t i = 0; i < 4; ++i) {
        rows[i] = load_columns(from + i * hop, hop);
    }
    transpose_quarters(rows[0], rows[1], rows[2], rows[3]);
}

/// The rows of the residues first, first + 1, ... from their transforms in the lanes.
[[gnu::noinline]] void transpose_rows(float* rows, const SinglePlanView& single, const Pack* x,
                                      std::size_t first, std::size_t count) {
    for (std::size_t k = 0; k < single.part_n; k += lane_n) {
        for (std::size_t lane = 0; lane < lane_n; lane += 4) {
            for (std::size_t part = 0; part < 2; ++part) {
                float* const to = rows + group_offset(k) + part * group_n;
                Pack packs[4];
                turn_rows(packs, x, k, part, lane);
                for (std::size_t i = 0; i < 4 && lane + i < count; ++i) {
                    store(to + single.rows[first + lane + i], packs[i]);
                }
            }
        }
    }
}

void clear_padding(Pack* x, const SinglePlanView& single) {
    for (std::size_t k = single.part_n; k < single.row_n; ++k) {
        store(x, k, {Pack{}, Pack{}});
    }
}

template <class T>
void rows_in_lanes(const FftPlanView& plan, const Elements<T>& elements, Pack* work) {
    const SinglePlanView& single = plan.single;
    clear_padding(work, single);
    const RowInput<T> input{elements, load_order(single.lane_residues)};
    GeneralTransform<RowInput<T>>(plan, work + 2 * single.row_n, input)
        .run_inner(work, single.outer_n);
}

template <class T>
void rows_by_residue(float* rows, const FftPlanView& plan, const Elements<T>& elements,
                     Pack* work) {
    const SinglePlanView& single = plan.single;
    const std::size_t row_count = single.row_count;
    Pack* const scratch = work + 2 * single.row_n;
    clear_padding(work, single);
    for (std::size_t first = 0; first < row_count; first += lane_n) {
        const ResidueInput<T> input{elements, first};
        GeneralTransform<ResidueInput<T>>(plan, scratch, input).run_inner(work, single.outer_n);
        transpose_rows(rows, single, work, first, row_count - first);
    }
}

/// pack_n packs of outputs of a direct transform of prime length, from the power `first` on;
/// returns output 0. Input j = g^b adds to output g^a the product with the root to the power a + b.
template <std::size_t pack_n, class T, class Input>
SORVO_INLINE Complex sum_powers(Complex* sums, const SinglePlanView& single, std::size_t first,
                                Input input) {
    const float* const re = single.powers + first;
    const float* const im = re + single.power_n;
    Complex zeroth = first_term(input(0));
    for (std::size_t i = 0; i < pack_n; ++i) {
        sums[i] = zeroth;
    }
    for (std::size_t j = 1; j < single.part_n; ++j) {
        const T x = input(j);
        const std::size_t b = single.exponents[j - 1];
        for (std::size_t i = 0; i < pack_n; ++i) {
            add_product(sums[i], Complex{load(re + b + i * lane_n), load(im + b + i * lane_n)}, x);
        }
        add(zeroth, x);
    }
    return zeroth;
}

template <std::size_t pack_n, class T, class Input, class Finish>
[[gnu::noinline]] Complex store_powers(float* dst, const SinglePlanView& single, std::size_t first,
                                       Input input, Finish finish) {
    Complex sums[pack_n];
    const Complex zeroth = sum_powers<pack_n, T>(sums, single, first, input);
    for (std::size_t i = 0; i < pack_n; ++i) {
        const Complex value = finish(sums[i]);
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
    Complex zeroth{};
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

template <class T>
void rows_directly(float* rows, const FftPlanView& plan, const Elements<T>& elements, float* work) {
    const std::size_t row_count = plan.single.row_count;
    for (std::size_t residue = 0; residue < row_count; ++residue) {
        const std::size_t row = plan.single.rows[residue];
        direct_transform(plan.single, elements, residue, row_count, work, Unscaled(),
                         [=](std::size_t k, const float* value) {
                             float* const to = rows + row + group_offset(k);
                             to[0] = value[0];
                             to[group_n] = value[1];
                         });
    }
}

/// Twiddles of lane_n columns, in the order of the arithmetic.
struct RowTwiddles {
    const float* at;

    SORVO_INLINE Complex operator[](std::size_t i) const {
        return load_group(at + 2 * i * group_n);
    }
};

constexpr std::size_t any_factor = 0;

/// The outputs of lane_n columns of a stage: put(u, value) of the inputs get(0), get(1), ...
template <std::size_t factor>
struct Columns {
    static constexpr std::size_t fixed_factor = factor;

    template <class Get, class Put>
    SORVO_INLINE static void join(std::size_t /*factor*/, RowTwiddles w, Pack* /*scratch*/, Get get,
                                  Put put) {
        Complex y[factor];
        for (std::size_t s = 0; s < factor; ++s) {
            y[s] = get(s);
        }
        for (std::size_t u = 0; u < factor; ++u) {
            Complex sum = y[0];
            for (std::size_t s = 1; s < factor; ++s) {
                add_product(sum, w[u * (factor - 1) + s - 1], y[s]);
            }
            put(u, sum);
        }
    }
};

SORVO_INLINE Complex plus_product(Complex a, Complex w, Complex b) {
    add_product(a, w, b);
    return a;
}

template <>
struct Columns<fused_twos> {
    static constexpr std::size_t fixed_factor = fused_twos;

    template <class Get, class Put>
    SORVO_INLINE static void join(std::size_t /*factor*/, RowTwiddles w, Pack* /*scratch*/, Get get,
                                  Put put) {
        const Complex y[4] = {get(0), get(1), get(2), get(3)};
        const Complex a = plus_product(y[0], w[0], y[1]);
        const Complex b = plus_product(y[2], w[0], y[3]);
        put(0, plus_product(a, w[2], b));
        put(2, plus_product(a, w[3], b));
        const Complex c = plus_product(y[0], w[1], y[1]);
        const Complex d = plus_product(y[2], w[1], y[3]);
        put(1, plus_product(c, w[4], d));
        put(3, plus_product(c, w[5], d));
    }
};

/// Any factor: `scratch` is room for the inputs.
template <>
struct Columns<any_factor> {
    static constexpr std::size_t fixed_factor = any_factor;

    template <class Get, class Put>
    SORVO_INLINE static void join(std::size_t factor, RowTwiddles w, Pack* scratch, Get get,
                                  Put put) {
        for (std::size_t s = 0; s < factor; ++s) {
            store(scratch, s, get(s));
        }
        for (std::size_t u = 0; u < factor; ++u) {
            Complex sum = load(scratch, 0);
            for (std::size_t s = 1; s < factor; ++s) {
                add_product(sum, w[u * (factor - 1) + s - 1], load(scratch, s));
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

/// Where a block of a stage has its inputs from, for the columns k and on: get(s) is input s. Here
/// from rows, where the outputs go too.
struct StoredInputs {
    SORVO_INLINE StoredInputs(const Pack* /*lanes*/, const float* x, std::size_t hop,
                              std::size_t /*block*/, std::size_t /*k*/)
        : x_(x), hop_(hop) {}

    SORVO_INLINE Complex operator()(std::size_t s) const { return load_group(x_ + s * hop_); }

  private:
    const float* x_;
    std::size_t hop_;
};

/// From the lanes of rows_in_lanes(). What is read behind the last lane is not used.
template <std::size_t factor>
struct LaneInputs {
    SORVO_INLINE LaneInputs(const Pack* lanes, const float* /*x*/, std::size_t /*hop*/,
                            std::size_t block, std::size_t k) {
        for (std::size_t part = 0; part < 2; ++part) {
            for (std::size_t s = 0; s < factor; s += 4) {
                turn_rows(parts_[part] + s, lanes, k, part, block * factor + s);
            }
        }
    }

    SORVO_INLINE Complex operator()(std::size_t s) const { return {parts_[0][s], parts_[1][s]}; }

  private:
    Pack parts_[2][(factor + 3) / 4 * 4];
};

/// A type as a value.
template <class T>
struct Type {
    using type = T;
};

/// Calls body(Columns<factor>(), Type of its inputs); `lanes` is nullptr where they are rows.
template <class Body>
SORVO_INLINE void with_stage(const RowStage& stage, const Pack* lanes, Body body) {
    with_columns(stage.factor, [&](auto columns) {
        constexpr std::size_t factor = decltype(columns)::fixed_factor;
        if constexpr (factor != any_factor) {
            if (lanes != nullptr) {
                body(columns, Type<LaneInputs<factor>>());
                return;
            }
        }
        body(columns, Type<StoredInputs>());
    });
}

/// True if the rows can stay in the lanes up to the stage that joins them first.
bool fit_lanes(const SinglePlanView& single) {
    const std::size_t factor = single.stages[single.outer_n - 1].factor;
    return single.powers == nullptr && single.row_count <= lane_n && factor <= 7 && factor != 6;
}

/// Goes through the columns of a stage, lane_n at a time: body(k, rest, x, w) with the first of
/// them, how many the row has from there on, where it is in the rows and the twiddles.
template <class Body>
SORVO_INLINE void for_columns(float* rows, const SinglePlanView& single, const RowStage& stage,
                              Body body) {
    const float* w = stage.twiddles;
    for (std::size_t start = 0; start < stage.sub_n; start += single.part_n) {
        for (std::size_t k = 0; k < single.part_n; k += lane_n) {
            const std::size_t in_group = k % group_n;
            body(start + k, single.part_n - k, rows + group_offset(k),
                 RowTwiddles{w + 2 * stage.twiddle_n * (k - in_group) + in_group});
        }
        rows += 2 * single.row_n;
        w += 2 * stage.twiddle_n * single.row_n;
    }
}

template <class StageColumns, class Inputs>
[[gnu::noinline]] void join_rows(float* rows, const SinglePlanView& single, const RowStage& stage,
                                 const Pack* lanes, Pack* scratch) {
    const std::size_t hop = stage.hop;
    const auto join_columns = [&](std::size_t k, std::size_t /*rest*/, float* x,
                                  RowTwiddles w) SORVO_INLINE_BODY {
        for (std::size_t block = 0; block < stage.blocks; ++block) {
            const Inputs get(lanes, x, hop, block, k);
            StageColumns::join(stage.factor, w, scratch, get,
                               [=](std::size_t u, Complex sum) { store_group(x + u * hop, sum); });
            x += stage.factor * hop;
        }
    };
    for_columns(rows, single, stage, join_columns);
}

/// The outermost stage. Packs overlap: what the padding of a row leaves is written over by the next
/// row; only what would reach beyond the rows of an output is cut off.
template <class StageColumns, class Inputs, class Finish>
[[gnu::noinline]] void deliver_rows(float* dst, float* rows, const SinglePlanView& single,
                                    const Pack* lanes, Pack* scratch, Finish finish) {
    const RowStage& stage = single.stages[0];
    const std::size_t sub_n = stage.sub_n;
    const auto deliver_columns = [&](std::size_t k, std::size_t rest, const float* x,
                                     RowTwiddles w) SORVO_INLINE_BODY {
        float* const to = dst + 2 * k;
        const Inputs get(lanes, x, stage.hop, 0, k);
        if (k + lane_n <= sub_n) {
            StageColumns::join(stage.factor, w, scratch, get, [=](std::size_t u, Complex sum) {
                const Complex value = finish(sum);
                store_interleaved(to + 2 * u * sub_n, value.re, value.im);
            });
        } else {
            const std::size_t count = rest < lane_n ? rest : lane_n;
            StageColumns::join(stage.factor, w, scratch, get, [=](std::size_t u, Complex sum) {
                const Complex value = finish(sum);
                store_interleaved(to + 2 * u * sub_n, value.re, value.im, count);
            });
        }
    };
    for_columns(rows, single, stage, deliver_columns);
}

/// All outputs, each as `finish` makes it of its sum.
template <class T, class Finish>
SORVO_INLINE void single_general(float* dst, const float* src, const FftPlanView& plan, float* work,
                                 Finish finish) {
    const SinglePlanView& single = plan.single;
    const Elements<T> elements(src, plan.n, work);
    work += single_tail_n;
    if (single.outer_n == 0) {
        direct_transform(single, elements, 0, 1, work, finish,
                         [=](std::size_t k, const float* value) {
                             __builtin_memcpy(dst + 2 * k, value, 2 * sizeof *dst);
                         });
        return;
    }
    float* const rows = work;
    work += 2 * single.row_count * single.row_n;
    auto* const packs = reinterpret_cast<Pack*>(work);
    const Pack* lanes = nullptr;
    if (single.powers != nullptr) {
        rows_directly(rows, plan, elements, work);
    } else if (fit_lanes(single)) {
        rows_in_lanes(plan, elements, packs);
        lanes = packs;
    } else {
        rows_by_residue(rows, plan, elements, packs);
    }
    for (std::size_t level = single.outer_n - 1; level > 0; --level) {
        const RowStage& stage = single.stages[level];
        with_stage(stage, lanes, [&](auto columns, auto inputs) {
            join_rows<decltype(columns), typename decltype(inputs)::type>(rows, single, stage,
                                                                          lanes, packs);
        });
        lanes = nullptr;
    }
    with_stage(single.stages[0], lanes, [&](auto columns, auto inputs) {
        deliver_rows<decltype(columns), typename decltype(inputs)::type>(dst, rows, single, lanes,
                                                                         packs, finish);
    });
}

void single_real_general(float* dst, const float* src, const FftPlanView& plan, float* work) {
    single_general<Pack>(dst, src, plan, work, Unscaled());
}

void single_inverse_general(float* dst, const float* src, const FftPlanView& plan, float* work) {
    single_general<Complex>(dst, src, plan, work, Divided{broadcast(static_cast<float>(plan.n))});
}

}  // namespace
}  // namespace sorvo::audio
