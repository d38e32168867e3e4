#include "stft/spectrogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "elementwise/complex_norm.h"
#include "elementwise/power.h"
#include "fft/fft_table.h"
#include "stft/frame_spectra.h"
#include "stft/framing.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// Where the frames of a spectrogram go, and in which form.
struct Spectrogram {
    float* dst;
    std::size_t frame_row;  ///< frames that a row has room for
    float power;
    int norm_type;
    const std::vector<float>& window;

    float* row(std::size_t bin, std::size_t t) const { return dst + 2 * (bin * frame_row + t); }
};

/// Frames begin ... end - 1, one at a time: the definition.
void compute_frames(const Spectrogram& out, const FrameSource& source,
                    const std::vector<float>& fft_table, std::size_t begin, std::size_t end) {
    auto frame = make_zeros<float>(static_cast<std::uint64_t>(source.fft_n));
    auto spectrum = make_zeros<float>(2 * static_cast<std::uint64_t>(source.fft_n));
    const std::size_t freq_n = frame.size() / 2 + 1;
    for (std::size_t t = begin; t < end; ++t) {
        extract_frame(frame, source.src, source.sample_n, static_cast<std::int64_t>(t),
                      source.hop_n, source.center);
        stft_core(spectrum, frame, source.fft_n, fft_table, out.window, out.norm_type);
        if (out.power > 0.0F) {
            complex_norm_1d(spectrum, out.power);
        }
        for (std::size_t k = 0; k < freq_n; ++k) {
            std::copy_n(&spectrum[2 * k], 2, out.row(k, t));
        }
    }
}

/// Rows are far apart, so that no hardware prefetcher foresees the next: asks for one further on.
void prefetch_row(const Spectrogram& out, std::size_t k, std::size_t freq_n, std::size_t t,
                  std::size_t frame_n) {
    constexpr std::size_t ahead = 12;
    constexpr std::size_t line = 16;
    for (std::size_t i = 0; k + ahead < freq_n && i < 2 * frame_n + line; i += line) {
        __builtin_prefetch(out.row(k + ahead, t) + i, 1);
    }
}

void write_powers(const Spectrogram& out, FrameSpectra& spectra, const FrameKernels& kernels,
                  std::size_t freq_n, std::size_t t, std::size_t frame_n) {
    float* const values = spectra.squares();
    for (std::size_t k = 0; k < freq_n; ++k) {
        float* const row = values + k * spectra.row_n();
        prefetch_row(out, k, freq_n, t, frame_n);
        raise_to_power(row, row, frame_n, out.power * 0.5F, kernels.level);
        kernels.interleave_zeros(out.row(k, t), row, frame_n);
    }
}

/// True if there is a zero whose sign the kernel might have missed: any but the imaginary parts of
/// the bins 0 and fft_n / 2, which are +0 for any signal.
bool write_complex(const Spectrogram& out, const float* values, std::size_t row_n,
                   const FrameKernels& kernels, std::size_t freq_n, std::size_t t,
                   std::size_t frame_n) {
    bool doubtful = false;
    for (std::size_t k = 0; k < freq_n; ++k) {
        const float* const re = values + 2 * k * row_n;
        prefetch_row(out, k, freq_n, t, frame_n);
        const Zeros zeros = kernels.interleave(out.row(k, t), re, re + row_n, frame_n);
        doubtful = doubtful || zeros.re || (zeros.im && k != 0 && k + 1 != freq_n);
    }
    return doubtful;
}

}  // namespace

void spectrogram(float* dst, const FrameSource& source, int win_n, int win_type, int max_frame_n,
                 float power, int norm_type, const FrameKernels* kernels) {
    if (source.frame_n < 1) {
        return;
    }
    const std::vector<float>& fft_table = FftTable::instance().ref_table(source.fft_n);
    const std::vector<float>& window = WindowTable::instance().ref_table(win_n, win_type);
    const Spectrogram out = {dst, static_cast<std::size_t>(max_frame_n), power, norm_type, window};
    const auto frame_n = static_cast<std::size_t>(source.frame_n);
    if (kernels == nullptr) {
        compute_frames(out, source, fft_table, 0, frame_n);
        return;
    }
    const FftPlan& plan = FftTable::instance().ref_plan(source.fft_n);
    const auto form =
        power > 0.0F ? FrameSpectra::Form::squares : FrameSpectra::Form::complex_values;
    FrameSpectra spectra(source, plan, window, norm_type, form, *kernels);
    const std::size_t freq_n = static_cast<std::size_t>(source.fft_n) / 2 + 1;
    for (std::size_t t = 0; t < frame_n; t += spectra.block_n()) {
        const std::size_t n = std::min(spectra.block_n(), frame_n - t);
        if (!spectra.load(static_cast<std::int64_t>(t))) {
            compute_frames(out, source, fft_table, t, t + n);
        } else if (power > 0.0F) {
            write_powers(out, spectra, *kernels, freq_n, t, n);
        } else if (write_complex(out, spectra.spectra(), spectra.row_n(), *kernels, freq_n, t, n) &&
                   is_pow2(source.fft_n)) {
            write_complex(out, spectra.exact_spectra(), spectra.row_n(), *kernels, freq_n, t, n);
        }
    }
}

void spectrogram(float* dst, const float* src, int sample_n, int fft_n, int hop_n, int win_n,
                 int win_type, int max_frame_n, int center, float power, int norm_type) {
    const int frame_n = std::min(max_frame_n, get_frame_len(sample_n, fft_n, hop_n, center));
    const FrameSource source = {src, sample_n, fft_n, hop_n, center, frame_n};
    spectrogram(dst, source, win_n, win_type, max_frame_n, power, norm_type,
                lanes_pay(source) ? &frame_kernels(cpu_level()) : nullptr);
}

}  // namespace sorvo::audio
