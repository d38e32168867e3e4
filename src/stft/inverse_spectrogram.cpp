#include "stft/inverse_spectrogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "stft/overlap_add.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"
#include "util/float_to_int.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// Samples that frame_n overlapping frames cover; up to 2^62, far beyond an int.
std::uint64_t overlap_length(int frame_n, int fft_n, int hop_n) {
    if (frame_n < 1) {
        return 0;
    }
    return (static_cast<std::uint64_t>(frame_n) - 1) * static_cast<std::uint64_t>(hop_n) +
           static_cast<std::uint64_t>(fft_n);
}

/// Bins 0 ... freq_n - 1 of frame t as they are, the others by X[fft_n - k] = conj(X[k]).
void load_spectrum(std::vector<float>& spec, const float* src, std::size_t t, std::size_t frame_n,
                   std::size_t freq_n, std::size_t fft_n) {
    for (std::size_t k = 0; k < freq_n; ++k) {
        spec[2 * k] = src[(k * frame_n + t) * 2];
        spec[2 * k + 1] = src[(k * frame_n + t) * 2 + 1];
    }
    for (std::size_t k = freq_n; k < fft_n; ++k) {
        spec[2 * k] = spec[2 * (fft_n - k)];
        spec[2 * k + 1] = -spec[2 * (fft_n - k) + 1];
    }
}

}  // namespace

int get_sample_len(int frame_n, int freq_n, int hop_n, bool center) {
    if (frame_n < 1) {
        return 0;
    }
    const std::int64_t hops = (static_cast<std::int64_t>(frame_n) - 1) * hop_n;
    return length_to_int(center ? hops : hops + 2 * static_cast<std::int64_t>(freq_n) - 2);
}

void apply_window_comp(std::vector<float>& dst, const std::vector<float>& src,
                       const std::vector<float>& window) {
    dst.resize(src.size());
    const auto sample_n = static_cast<std::ptrdiff_t>(src.size() / 2);
    const WindowSpan span(sample_n, static_cast<std::ptrdiff_t>(window.size()));
    for (std::ptrdiff_t i = span.begin; i < span.cleared; ++i) {
        const float weight =
            i < span.end ? window[static_cast<std::size_t>(i - span.offset)] : 0.0F;
        const auto at = static_cast<std::size_t>(2 * i);
        dst[at] = src[at] * weight;
        dst[at + 1] = src[at + 1] * weight;
    }
    std::fill(dst.begin(), dst.begin() + 2 * span.begin, 0.0F);
    std::fill(dst.begin() + 2 * span.cleared, dst.end(), 0.0F);
}

void scale_istft_scipy(std::vector<float>& data, int fft_n) {
    const float factor = 0.5F * static_cast<float>(fft_n);
    for (float& x : data) {
        x *= factor;
    }
}

void scale_istft_torch(std::vector<float>& /*data*/, const std::vector<float>& /*window*/) {}

void istft_core(std::vector<float>& out, std::vector<float>& spec, int fft_n,
                const std::vector<float>& inv_table, const std::vector<float>& window,
                int norm_type) {
    ifft(spec, fft_n, inv_table);
    apply_window_comp(out, spec, window);
    if (norm_type == 2) {
        scale_istft_scipy(out, fft_n);
    } else if (norm_type == 1) {
        scale_istft_torch(out, window);
    }
}

void scale_istft_window_suqare_sum(std::vector<float>& y, const std::vector<float>& window,
                                   int fft_n, int hop_n, int /*unused*/, int frame_n) {
    auto squares = make_zeros<float>(window.size());
    std::transform(window.begin(), window.end(), squares.begin(), [](float w) { return w * w; });
    auto sums = make_zeros<float>(overlap_length(frame_n, fft_n, hop_n));
    const WindowSpan span(fft_n, static_cast<std::ptrdiff_t>(window.size()));
    for (std::ptrdiff_t t = 0; t < frame_n; ++t) {
        for (std::ptrdiff_t i = span.begin; i < span.end; ++i) {
            sums[static_cast<std::size_t>(t * hop_n + i)] +=
                squares[static_cast<std::size_t>(i - span.offset)];
        }
    }
    const std::size_t n = std::min(sums.size(), y.size() / 2);
    for (std::size_t i = 0; i < n; ++i) {
        if (static_cast<double>(sums[i]) > 1e-10) {
            y[2 * i] /= sums[i];
        }
    }
}

namespace {

int transform_length(int freq_n) {
    const std::int64_t n = 2 * static_cast<std::int64_t>(freq_n) - 2;
    if (n > std::numeric_limits<int>::max()) {
        throw std::bad_alloc();  // no table of that size can be had
    }
    return static_cast<int>(n);
}

}  // namespace

void inverse_spectrogram_plain(float* dst, int max_sample_n, const Synthesis& synthesis) {
    const int fft_n = transform_length(synthesis.freq_n);
    const std::vector<float>& inv_table = FftTable::instance().ref_inv_table(fft_n);
    const std::vector<float>& window =
        WindowTable::instance().ref_table(synthesis.win_n, synthesis.win_type);
    const auto frame_n = static_cast<std::size_t>(synthesis.frame_n);
    auto spec = make_zeros<float>(2 * static_cast<std::uint64_t>(fft_n));
    auto frame = make_zeros<float>(spec.size());
    const std::uint64_t length = overlap_length(synthesis.frame_n, fft_n, synthesis.hop_n);
    auto sum = make_zeros<float>(2 * length);
    for (std::size_t t = 0; t < frame_n; ++t) {
        load_spectrum(spec, synthesis.src, t, frame_n, static_cast<std::size_t>(synthesis.freq_n),
                      static_cast<std::size_t>(fft_n));
        istft_core(frame, spec, fft_n, inv_table, window, synthesis.norm_type);
        float* const at = sum.data() + 2 * t * static_cast<std::size_t>(synthesis.hop_n);
        for (std::size_t i = 0; i < frame.size(); ++i) {
            at[i] += frame[i];
        }
    }
    scale_istft_window_suqare_sum(sum, window, fft_n, synthesis.hop_n, fft_n, synthesis.frame_n);
    const std::uint64_t offset = synthesis.center != 0 ? static_cast<std::uint64_t>(fft_n) / 2 : 0;
    const auto n = std::min(length, static_cast<std::uint64_t>(max_sample_n));
    for (std::uint64_t i = 0; i < n; ++i) {
        dst[i] = i + offset < length ? sum[static_cast<std::size_t>(2 * (i + offset))] : 0.0F;
    }
}

void inverse_spectrogram(float* dst, int max_sample_n, const Synthesis& synthesis,
                         SimdLevel level) {
    if (batches_pay(synthesis)) {
        OverlapAdd(dst, max_sample_n, synthesis, level).run();
    } else {
        inverse_spectrogram_plain(dst, max_sample_n, synthesis);
    }
}

}  // namespace sorvo::audio
