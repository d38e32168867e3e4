#include "fft_engine/mixed_radix.h"

#include <algorithm>

#include "fft_engine/twiddles.h"

namespace sorvo::audio::kelpon::fft {
namespace {

constexpr unsigned identity[row_lane_n] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

std::size_t line_floats(const StageShape& shape) {
    return 2 * round_up_to_lanes(shape.radix);
}

}  // namespace

MixedRadix::MixedRadix(unsigned n, SimdLevel level, const MakeLineTransform& make_line_transform)
    : n_(n),
      kernels_(kernels(level)),
      factors_(choose_factors(n)),
      column_index_(CooleyTukeyIndex(factors_.columns)),
      row_position_(factors_.row_n) {
    const std::vector<unsigned> row_index = CooleyTukeyIndex(factors_.rows);
    for (unsigned row = 0; row < factors_.row_n; ++row) row_position_[row_index[row]] = row;
    for (const CooleyTukeyFactor& factor : factors_.columns) {
        const Twiddles kind = factor.span == 1 ? Twiddles::none : Twiddles::per_row;
        column_stages_.push_back(make_stage(factor, factors_.column_n, kind, make_line_transform));
    }
    for (const CooleyTukeyFactor& factor : factors_.rows) {
        const Twiddles kind =
            factors_.column_n == 1 && factor.span == 1 ? Twiddles::none : Twiddles::per_lane;
        row_stages_.push_back(make_stage(factor, factors_.row_n, kind, make_line_transform));
    }
    scratch_n_ = count_scratch();
}

MixedRadix::Stage MixedRadix::make_stage(const CooleyTukeyFactor& factor, unsigned pass_n,
                                         Twiddles kind,
                                         const MakeLineTransform& make_line_transform) const {
    const unsigned radix = factor.radix;
    Stage stage;
    stage.shape = {factor.span, pass_n / factor.span / radix, radix, nullptr};
    stage.kind = kind;
    const StageKernels& stage_kernels = kernels_.stages[static_cast<std::size_t>(kind)];

    // A lane of the second pass is output `lane` of the transforms that the first pass made.
    const bool per_lane = kind == Twiddles::per_lane;
    const unsigned lane_count = per_lane ? factors_.column_n : 1;
    const std::size_t row_twiddles = std::size_t{factor.span} * (radix - 1);
    if (kind != Twiddles::none) {
        const std::vector<std::complex<float>> table =
            calcW(lane_count * factor.span * radix, Direction::forward,
                  radix == 2 ? TableLength::half : TableLength::full);
        stage.twiddles_per_block = per_lane ? row_twiddles * row_floats : 0;
        stage.twiddles.resize(per_lane ? round_up_to_lanes(lane_count) / row_lane_n *
                                             stage.twiddles_per_block
                                       : 2 * row_twiddles);
        for (std::size_t k = 0; k < factor.span; ++k) {
            for (std::size_t a = 1; a < radix; ++a) {
                const std::size_t entry = k * (radix - 1) + a - 1;
                for (std::size_t lane = 0; lane < lane_count; ++lane) {
                    const std::complex<float> w = table[a * (lane + lane_count * k)];
                    const std::size_t at = per_lane ? lane / row_lane_n * stage.twiddles_per_block +
                                                          entry * row_floats + lane % row_lane_n
                                                    : 2 * entry;
                    stage.twiddles[at] = w.real();
                    stage.twiddles[at + (per_lane ? row_lane_n : 1)] = w.imag();
                }
            }
        }
    }

    if (radix > max_direct_radix) {
        stage.line_transform = make_line_transform(radix);
        stage.kernel = stage_kernels.twiddle;
    } else if (radix > max_butterfly_radix) {
        stage.roots = calcW(radix);
        stage.shape.roots = reinterpret_cast<const float*>(stage.roots.data());
        stage.kernel = stage_kernels.direct;
    } else {
        stage.kernel = stage_kernels.butterfly[radix];
    }
    return stage;
}

std::size_t MixedRadix::count_scratch() const {
    std::size_t stage_scratch = 0;
    for (const auto* stages : {&column_stages_, &row_stages_}) {
        for (const Stage& stage : *stages) {
            const std::size_t needed =
                stage.line_transform != nullptr
                    ? row_lane_n * line_floats(stage.shape) + stage.line_transform->scratch_floats()
                    : direct_scratch_floats(stage.shape.radix);
            stage_scratch = std::max(stage_scratch, needed);
        }
    }
    const std::size_t merging_rows =
        round_up_to_lanes(factors_.column_n) / row_lane_n * factors_.row_n;
    return (factors_.column_n + merging_rows) * row_floats + stage_scratch;
}

template <class Out, class In>
void MixedRadix::transform(Out out, In in, bool inverse, float scale, float* scratch) const {
    const std::size_t column_n = factors_.column_n;
    const std::size_t row_n = factors_.row_n;
    float* const block = scratch;
    float* const merging_blocks = block + column_n * row_floats;
    const std::size_t merging_block_n = round_up_to_lanes(column_n) / row_lane_n;
    const std::size_t merging_block_floats = row_n * row_floats;
    float* const stage_scratch = merging_blocks + merging_block_n * merging_block_floats;

    const auto& input = std::get<InputKernels<In>>(kernels_.input);
    for (std::size_t q = 0; q < row_n; q += row_lane_n) {
        const std::size_t used_n = std::min(row_lane_n, row_n - q);
        input.load(block, in, {n_, q, row_n, column_n, used_n}, column_index_.data(), inverse);
        run_stages(block, column_stages_, 0, used_n, stage_scratch);
        for (std::size_t i = 0; i < merging_block_n; ++i) {
            kernels_.transpose({merging_blocks + i * merging_block_floats, row_floats, row_lane_n,
                                row_position_.data() + q, used_n},
                               {block + i * row_lane_n * row_floats, row_floats, row_lane_n,
                                std::min(row_lane_n, column_n - i * row_lane_n)});
        }
    }
    const auto& output = std::get<OutputKernels<Out>>(kernels_.output);
    // From the last block down: the rows of a part-filled one reach into those of the first.
    for (std::size_t i = merging_block_n; i-- > 0;) {
        float* const rows = merging_blocks + i * merging_block_floats;
        const std::size_t used_n = std::min(row_lane_n, column_n - i * row_lane_n);
        run_stages(rows, row_stages_, i, used_n, stage_scratch);
        output.store(out, rows, {n_, i * row_lane_n, column_n, row_n, used_n}, scale, inverse);
    }
}

template void MixedRadix::transform(std::complex<float>*, const short*, bool, float, float*) const;
template void MixedRadix::transform(std::complex<float>*, const float*, bool, float, float*) const;
template void MixedRadix::transform(std::complex<float>*, const std::complex<float>*, bool, float,
                                    float*) const;
template void MixedRadix::transform(Planes, ConstPlanes, bool, float, float*) const;

void MixedRadix::run_stages(float* rows, const std::vector<Stage>& stages, std::size_t block,
                            std::size_t used_lane_n, float* scratch) const {
    for (const Stage& stage : stages) {
        if (stage.kernel != nullptr) {
            stage.kernel(rows, stage.twiddles.data() + block * stage.twiddles_per_block,
                         stage.shape, used_lane_n, scratch);
        }
        if (stage.line_transform != nullptr) run_line_stage(rows, stage, used_lane_n, scratch);
    }
}

void MixedRadix::run_line_stage(float* rows, const Stage& stage, std::size_t used_lane_n,
                                float* scratch) const {
    const StageShape& shape = stage.shape;
    const std::size_t step = shape.span * row_floats;
    const std::size_t line_n = line_floats(shape);
    float* const lines = scratch;
    float* const line_scratch = lines + row_lane_n * line_n;
    for (std::size_t i = 0; i < shape.block_n * shape.span; ++i) {
        float* const first =
            rows + i / shape.span * shape.radix * step + i % shape.span * row_floats;
        for (std::size_t a = 0; a < shape.radix; a += row_lane_n) {
            const std::size_t tile_n = std::min<std::size_t>(row_lane_n, shape.radix - a);
            kernels_.transpose({lines + a, line_n, line_n / 2, identity, used_lane_n},
                               {first + a * step, step, row_lane_n, tile_n});
        }
        for (std::size_t lane = 0; lane < used_lane_n; ++lane) {
            float* const line = lines + lane * line_n;
            stage.line_transform->transform({line, line + line_n / 2}, line_scratch);
        }
        for (std::size_t a = 0; a < shape.radix; a += row_lane_n) {
            const std::size_t tile_n = std::min<std::size_t>(row_lane_n, shape.radix - a);
            kernels_.transpose({first + a * step, step, row_lane_n, identity, tile_n},
                               {lines + a, line_n, line_n / 2, used_lane_n});
        }
    }
}

}  // namespace sorvo::audio::kelpon::fft
