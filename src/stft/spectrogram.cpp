#include "stft/spectrogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "elementwise/complex_norm.h"
#include "fft/fft_table.h"
#include "math/power.h"
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

FrameForm form_of(float power) {
    if (!(power > 0.0F)) {
        return FrameForm::complex_values;
    }
    return power == 1.0F ? FrameForm::roots : FrameForm::squares;
}

/// Where bins are few and come in order, the kernels write right into the spectrogram, and memory
/// is waited for while they compute. More rows than that, or rows in the order of a power of two,
/// push one another out of the caches: whole blocks are then written row by row.
bool writes_right_away(int fft_n, float power) {
    return fft_n <= 512 && !is_pow2(fft_n) && (power <= 0.0F || made_by_kernels(power));
}

/// Brings rows of the kernels into the spectrogram, raised to its power. False if there is a zero
/// whose sign may be wrong.
bool write_rows(const Spectrogram& out, const RowMove& move, float* rows,
                const FrameKernels& kernels) {
    if (!(out.power > 0.0F)) {
        return !kernels.interleave(move);
    }
    for (std::size_t k = 0; !made_by_kernels(out.power) && k < move.row_n; ++k) {
        float* const row = rows + k * move.src_row;
        raise_to_power(row, row, move.n, out.power * 0.5F, kernels.level);
    }
    kernels.interleave_zeros(move);
    return true;
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
    FrameSpectra spectra(source, plan, window, norm_type, form_of(power), *kernels);
    const std::size_t freq_n = static_cast<std::size_t>(source.fft_n) / 2 + 1;
    const bool right_away = writes_right_away(source.fft_n, power);
    for (std::size_t t = 0; t < frame_n; t += spectra.block_n()) {
        const std::size_t n = std::min(spectra.block_n(), frame_n - t);
        if (!spectra.load(static_cast<std::int64_t>(t), n)) {
            compute_frames(out, source, fft_table, t, t + n);
            continue;
        }
        const std::size_t written =
            right_away ? spectra.write(out.row(0, t), 2 * out.frame_row) : 0;
        if (written == n) {
            continue;
        }
        float* const rows = spectra.rows(written);
        RowMove move = {
            out.row(0, t + written), 2 * out.frame_row, rows, spectra.row_n(), freq_n, n - written};
        if (!write_rows(out, move, rows, *kernels) && is_pow2(source.fft_n)) {
            move.src = spectra.exact_rows(written);
            kernels->interleave(move);
        }
    }
}

void spectrogram(float* dst, const float* src, int sample_n, int fft_n, int hop_n, int win_n,
                 int win_type, int max_frame_n, int center, float power, int norm_type) {
    const int frame_n = std::min(max_frame_n, get_frame_len(sample_n, fft_n, hop_n, center));
    const FrameSource source = {src, sample_n, fft_n, hop_n, center, frame_n};
    spectrogram(dst, source, win_n, win_type, max_frame_n, power, norm_type,
                lanes_pay(source) ? &frame_kernels(simd_level()) : nullptr);
}

}  // namespace sorvo::audio
