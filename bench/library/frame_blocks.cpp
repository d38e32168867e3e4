#include "frame_blocks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace sorvo::bench {
namespace {

using Four = double __attribute__((vector_size(32), aligned(8), may_alias));

void transpose_4x4(double* dst, std::ptrdiff_t dst_distance, const double* src,
                   std::ptrdiff_t src_distance) {
    const auto load = [=](std::ptrdiff_t i) {
        return *reinterpret_cast<const Four*>(src + i * src_distance);
    };
    const auto store = [=](std::ptrdiff_t i, Four v) {
        *reinterpret_cast<Four*>(dst + i * dst_distance) = v;
    };
    const Four a = load(0);
    const Four b = load(1);
    const Four c = load(2);
    const Four d = load(3);
    const Four ab_even = __builtin_shufflevector(a, b, 0, 4, 2, 6);
    const Four ab_odd = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const Four cd_even = __builtin_shufflevector(c, d, 0, 4, 2, 6);
    const Four cd_odd = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    store(0, __builtin_shufflevector(ab_even, cd_even, 0, 1, 4, 5));
    store(1, __builtin_shufflevector(ab_odd, cd_odd, 0, 1, 4, 5));
    store(2, __builtin_shufflevector(ab_even, cd_even, 2, 3, 6, 7));
    store(3, __builtin_shufflevector(ab_odd, cd_odd, 2, 3, 6, 7));
}

int whole_lines(int n, int per_line) {
    return (n + per_line - 1) / per_line * per_line;
}

/// One bin of `lane_n` frames: spectra (re, im) to what the task asks for.
template <int lane_n, Magnitude magnitude, bool mel>
void write(float* __restrict dst, const float* __restrict re, const float* __restrict im) {
    for (int l = 0; l < lane_n; ++l) {
        if constexpr (magnitude == Magnitude::complex) {
            dst[2 * l] = re[l];
            dst[2 * l + 1] = im[l];
        } else {
            const float power = re[l] * re[l] + im[l] * im[l];
            const float value = magnitude == Magnitude::power ? power : std::sqrt(power);
            if constexpr (mel) {
                dst[l] = value;
            } else {
                dst[2 * l] = value;
                dst[2 * l + 1] = 0.0F;
            }
        }
    }
}

}  // namespace

int real_distance(int fft_n) {
    return whole_lines(fft_n, 16);
}

int half_spectrum_distance(int fft_n) {
    return whole_lines(fft_n / 2 + 1, 8);
}

std::vector<float> hann_window(int n) {
    std::vector<float> window(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        window[static_cast<std::size_t>(i)] =
            static_cast<float>(0.5 - 0.5 * std::cos(2.0 * M_PI * i / n));
    }
    return window;
}

void transpose(float* dst, std::ptrdiff_t dst_distance, const float* src,
               std::ptrdiff_t src_distance, int rows, int columns) {
    auto* const to = reinterpret_cast<double*>(dst);
    const auto* const from = reinterpret_cast<const double*>(src);
    const int whole_rows = rows / 4 * 4;
    const int whole_columns = columns / 4 * 4;
    for (int c = 0; c < whole_columns; c += 4) {
        for (int r = 0; r < whole_rows; r += 4) {
            transpose_4x4(to + c * dst_distance + r, dst_distance, from + r * src_distance + c,
                          src_distance);
        }
    }
    for (int c = 0; c < columns; ++c) {
        for (int r = c < whole_columns ? whole_rows : 0; r < rows; ++r) {
            dst[2 * (c * dst_distance + r)] = src[2 * (r * src_distance + c)];
            dst[2 * (c * dst_distance + r) + 1] = src[2 * (r * src_distance + c) + 1];
        }
    }
}

FrameBlocks::FrameBlocks(const AnalysisTask& task, const BlockShape& shape, float* in, float* out,
                         std::function<void()> transform)
    : task_(task),
      shape_(shape),
      in_(in),
      out_(out),
      transform_(std::move(transform)),
      window_(hann_window(task.fft_n)) {
    const auto fft_n = static_cast<std::size_t>(task.fft_n);
    const auto lane_n = static_cast<std::size_t>(shape.lane_n);
    for (float& w : window_) w *= shape.pairs ? 0.5F : 1.0F;  // separation adds two spectra
    for (auto& edge : edges_) edge.resize(fft_n);
    if (shape.input == Layout::interleaved) consecutive_.resize(2 * fft_n * lane_n);
    if (shape.output == Layout::consecutive) interleaved_.resize(2 * fft_n * lane_n);
    if (!task.bands.empty()) powers_.resize((fft_n / 2 + 1) * 2 * lane_n);
}

const float* FrameBlocks::frame(std::vector<float>& edge, const float* src, int t) const {
    const int n = task_.sample_n;
    const int first = t * task_.hop_n - task_.fft_n / 2;
    if (first >= 0 && first + task_.fft_n <= n) return src + first;
    for (int i = 0; i < task_.fft_n; ++i) {
        const int at = std::abs(first + i);
        edge[static_cast<std::size_t>(i)] = src[at < n ? at : 2 * (n - 1) - at];
    }
    return edge.data();
}

void FrameBlocks::load(const float* src, int t0) {
    const float* __restrict const w = window_.data();
    const int n = task_.fft_n;
    float* const block = shape_.input == Layout::consecutive ? in_ : consecutive_.data();
    for (int l = 0; l < shape_.lane_n; ++l) {
        const float* __restrict const a = frame(edges_[0], src, t0 + l);
        if (shape_.pairs) {
            const float* __restrict const b = frame(edges_[1], src, t0 + shape_.lane_n + l);
            float* __restrict const to = block + std::ptrdiff_t{2} * n * l;
            for (int i = 0; i < n; ++i) {
                to[2 * i] = w[i] * a[i];
                to[2 * i + 1] = w[i] * b[i];
            }
        } else {
            float* __restrict const to = block + std::ptrdiff_t{real_distance(n)} * l;
            for (int i = 0; i < n; ++i) to[i] = w[i] * a[i];
        }
    }
    if (shape_.input == Layout::interleaved) {
        transpose(in_, shape_.lane_n, block, n, shape_.lane_n, n);
    }
}

template <int lane_n, bool pairs, Magnitude magnitude, bool mel>
void FrameBlocks::emit_bins(float* dst, int t0, const float* spectra) {
    constexpr int frame_n = pairs ? 2 * lane_n : lane_n;
    const int n = task_.fft_n;
    for (int k = 0; k <= n / 2; ++k) {
        const float* __restrict const z = spectra + std::ptrdiff_t{2} * lane_n * k;
        float* const to = mel ? powers_.data() + std::ptrdiff_t{frame_n} * k
                              : dst + 2 * (std::ptrdiff_t{task_.frame_n} * k + t0);
        float re[frame_n];
        float im[frame_n];
        if constexpr (pairs) {
            const float* __restrict const m = spectra + std::ptrdiff_t{2} * lane_n * ((n - k) % n);
            for (int l = 0; l < lane_n; ++l) {
                re[l] = z[2 * l] + m[2 * l];
                im[l] = z[2 * l + 1] - m[2 * l + 1];
                re[lane_n + l] = z[2 * l + 1] + m[2 * l + 1];
                im[lane_n + l] = m[2 * l] - z[2 * l];
            }
        } else {
            for (int l = 0; l < lane_n; ++l) {
                re[l] = z[2 * l];
                im[l] = z[2 * l + 1];
            }
        }
        write<frame_n, magnitude, mel>(to, re, im);
    }
}

template <int lane_n>
void FrameBlocks::project(float* dst, int t0) const {
    for (std::size_t m = 0; m < task_.bands.size(); ++m) {
        const MelBand& band = task_.bands[m];
        float sums[lane_n] = {};
        const float* power = powers_.data() + band.first * lane_n;
        for (const float weight : band.weights) {
            for (int l = 0; l < lane_n; ++l) sums[l] += weight * power[l];
            power += lane_n;
        }
        std::copy_n(sums, lane_n, dst + m * static_cast<std::size_t>(task_.frame_n) + t0);
    }
}

template <int lane_n>
void FrameBlocks::emit(float* dst, int t0) {
    const float* spectra = out_;
    const int n = task_.fft_n;
    if (shape_.output == Layout::consecutive) {
        const int bin_n = shape_.pairs ? n : n / 2 + 1;
        const int distance = shape_.pairs ? n : half_spectrum_distance(n);
        transpose(interleaved_.data(), lane_n, out_, distance, lane_n, bin_n);
        spectra = interleaved_.data();
    }
    const auto bins = [&](auto pairs) {
        constexpr bool p = decltype(pairs)::value;
        const bool power = task_.magnitude == Magnitude::power;
        if (task_.magnitude == Magnitude::complex) {
            emit_bins<lane_n, p, Magnitude::complex, false>(dst, t0, spectra);
        } else if (!task_.bands.empty()) {
            power ? emit_bins<lane_n, p, Magnitude::power, true>(dst, t0, spectra)
                  : emit_bins<lane_n, p, Magnitude::magnitude, true>(dst, t0, spectra);
            project<p ? 2 * lane_n : lane_n>(dst, t0);
        } else {
            power ? emit_bins<lane_n, p, Magnitude::power, false>(dst, t0, spectra)
                  : emit_bins<lane_n, p, Magnitude::magnitude, false>(dst, t0, spectra);
        }
    };
    shape_.pairs ? bins(std::true_type{}) : bins(std::false_type{});
}

void FrameBlocks::run(float* dst, const float* src) {
    const int block_n = shape_.pairs ? 2 * shape_.lane_n : shape_.lane_n;
    for (int t = 0; t < task_.frame_n; t += block_n) {
        const int t0 = std::min(t, task_.frame_n - block_n);
        load(src, t0);
        transform_();
        switch (shape_.lane_n) {
            case 8:
                emit<8>(dst, t0);
                break;
            case 16:
                emit<16>(dst, t0);
                break;
            default:
                emit<32>(dst, t0);
                break;
        }
    }
}

}  // namespace sorvo::bench
