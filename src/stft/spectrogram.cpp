#include "stft/spectrogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fft/fft_table.h"
#include "math/complex_norm.h"
#include "math/power.h"
#include "stft/frame_spectra.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// Where bins are few and come in order, the kernels write right into the spectrogram, and memory
/// is waited for while they compute. More rows than that, or rows in the order of a power of two,
/// push one another out of the caches: whole blocks are then written row by row.
bool writes_right_away(int fft_n, float power) {
    return fft_n <= 512 && !is_pow2(fft_n) && (power <= 0.0F || is_made_by_kernels(power));
}

}  // namespace

void spectrogram_plain(float* dst, const Signal& signal, const Analysis& analysis,
                       int max_frame_n) {
    const std::vector<float>& fft_table = FftTable::instance().ref_table(analysis.fft_n);
    const std::vector<float>& window =
        WindowTable::instance().ref_table(analysis.win_n, analysis.win_type);
    auto frame = make_zeros<float>(static_cast<std::uint64_t>(analysis.fft_n));
    auto spectrum = make_zeros<float>(2 * static_cast<std::uint64_t>(analysis.fft_n));
    const std::size_t freq_n = frame.size() / 2 + 1;
    const int frame_n = frame_count(signal, analysis, max_frame_n);
    for (int t = 0; t < frame_n; ++t) {
        extract_frame(frame, signal.samples, signal.n, t, analysis.hop_n, analysis.center);
        stft_core(spectrum, frame, analysis.fft_n, fft_table, window, analysis.norm_type);
        if (analysis.power > 0.0F) {
            complex_norm_1d(spectrum, analysis.power);
        }
        for (std::size_t k = 0; k < freq_n; ++k) {
            const std::size_t row = k * static_cast<std::size_t>(max_frame_n);
            std::copy_n(&spectrum[2 * k], 2, dst + 2 * (row + static_cast<std::size_t>(t)));
        }
    }
}

void spectrogram(float* dst, const Signal& signal, const Analysis& analysis, int max_frame_n,
                 SimdLevel level) {
    const int frame_n = frame_count(signal, analysis, max_frame_n);
    if (frame_n < 1) {
        return;
    }
    if (!batches_pay(analysis, frame_n)) {
        spectrogram_plain(dst, signal, analysis, max_frame_n);
        return;
    }
    const float power = analysis.power;
    const std::size_t freq_n = static_cast<std::size_t>(analysis.fft_n) / 2 + 1;
    const std::size_t dst_step = 2 * static_cast<std::size_t>(max_frame_n);
    const bool raised = power > 0.0F && !is_made_by_kernels(power);
    const bool right_away = writes_right_away(analysis.fft_n, power);
    FrameSpectra spectra(signal, analysis, frame_n, form_of(power), level);
    spectra.for_each_block([&](std::size_t t, std::size_t n) {
        const std::size_t first = right_away ? spectra.write_right_away(dst + 2 * t, dst_step) : 0;
        if (first == n) {
            return;
        }
        float* const rows = spectra.rows(first);
        for (std::size_t k = 0; raised && k < freq_n; ++k) {
            float* const row = rows + k * spectra.row_n();
            raise_to_power(row, row, n - first, power * 0.5F, level);
        }
        spectra.write(dst + 2 * (t + first), dst_step, first, n - first);
    });
}

}  // namespace sorvo::audio
