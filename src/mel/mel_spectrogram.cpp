#include "mel/mel_spectrogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "elementwise/complex_norm.h"
#include "fft/fft_table.h"
#include "math/power.h"
#include "mel/mel_conversion.h"
#include "mel/mel_kernels.h"
#include "stft/framing.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// What every frame needs, and where its mel values go: dst[m * frame_n + t].
struct MelFrames {
    float* dst;
    const FrameSource& source;
    float power;
    int norm_type;
    const std::vector<float>& fft_table;
    const std::vector<float>& window;
    const std::vector<std::vector<float>>& bank;
};

/// Frames begin ... end - 1, one at a time: the definition.
void compute_frames(const MelFrames& mel_frames, std::size_t begin, std::size_t end) {
    const FrameSource& source = mel_frames.source;
    const auto frame_n = static_cast<std::size_t>(source.frame_n);
    auto frame = make_zeros<float>(static_cast<std::uint64_t>(source.fft_n));
    auto spectrum = make_zeros<float>(2 * static_cast<std::uint64_t>(source.fft_n));
    auto power_spec = make_zeros<float>(frame.size() / 2 + 1);
    auto mel = make_zeros<float>(mel_frames.bank.size());
    for (std::size_t t = begin; t < end; ++t) {
        extract_frame(frame, source.src, source.sample_n, static_cast<std::int64_t>(t),
                      source.hop_n, source.center);
        stft_core(spectrum, frame, source.fft_n, mel_frames.fft_table, mel_frames.window,
                  mel_frames.norm_type);
        complex_norm_1d(power_spec, spectrum, mel_frames.power);
        convert_freq_to_mel_1d(mel, power_spec, mel_frames.bank, static_cast<int>(mel.size()));
        for (std::size_t m = 0; m < mel.size(); ++m) {
            mel_frames.dst[m * frame_n + t] = mel[m];
        }
    }
}

}  // namespace

void mel_spectrogram(float* dst, const FrameSource& source, int win_n, int win_type, float power,
                     int fft_norm_type, const MelFilterBankParam& mel,
                     const FrameKernels* kernels) {
    if (source.frame_n < 1) {
        return;
    }
    const MelFrames mel_frames = {
        dst,
        source,
        power,
        fft_norm_type,
        FftTable::instance().ref_table(source.fft_n),
        WindowTable::instance().ref_table(win_n, win_type),
        MFBTable::instance().ref_table(mel.freq_n, mel.f_min, mel.f_max, mel.mel_n, mel.sample_rate,
                                       mel.mel_norm, mel.htk)};
    const auto frame_n = static_cast<std::size_t>(source.frame_n);
    if (kernels == nullptr) {
        compute_frames(mel_frames, 0, frame_n);
        return;
    }
    const std::vector<MelBand>& bands = MFBTable::instance().ref_bands(
        mel.freq_n, mel.f_min, mel.f_max, mel.mel_n, mel.sample_rate, mel.mel_norm, mel.htk);
    const auto form = power == 1.0F ? FrameForm::roots : FrameForm::squares;
    FrameSpectra spectra(source, FftTable::instance().ref_plan(source.fft_n), mel_frames.window,
                         fft_norm_type, form, *kernels);
    const MelKernels& mel_kernel = mel_kernels(kernels->level);
    const auto freq_n = static_cast<std::size_t>(mel.freq_n);
    const std::size_t block_n = spectra.block_n();
    for (std::size_t t = 0; t < frame_n; t += block_n) {
        const std::size_t n = std::min(block_n, frame_n - t);
        if (!spectra.load(static_cast<std::int64_t>(t), n)) {
            compute_frames(mel_frames, t, t + n);
            continue;
        }
        float* const values = spectra.rows(0);
        bool finite = true;
        for (std::size_t k = 0; !made_by_kernels(power) && k < freq_n; ++k) {
            float* const row = values + k * spectra.row_n();
            raise_to_power(row, row, n, power * 0.5F, kernels->level);
            // The squares are finite, but a high power of them may not be.
            finite = (power <= 2.0F || mel_kernel.all_finite(row, n)) && finite;
        }
        if (finite) {
            mel_kernel.apply_bands(dst + t, frame_n, values, spectra.row_n(), bands.data(),
                                   bands.size(), n);
        } else {
            compute_frames(mel_frames, t, t + n);
        }
    }
}

void mel_spectrogram(float* dst, const float* src, int sample_n, int sample_rate, int fft_n,
                     int hop_n, int win_n, int win_type, int max_frame_n, int center, float power,
                     int fft_norm_type, float f_min, float f_max, int mel_n, int mel_norm,
                     int mel_formula) {
    const int frame_n = std::min(get_frame_len(sample_n, fft_n, hop_n, center), max_frame_n);
    const FrameSource source = {src, sample_n, fft_n, hop_n, center, frame_n};
    mel_spectrogram(dst, source, win_n, win_type, power, fft_norm_type,
                    {fft_n / 2 + 1, f_min, f_max, mel_n, sample_rate, mel_norm, mel_formula != 0},
                    lanes_pay(source) ? &frame_kernels(simd_level()) : nullptr);
}

}  // namespace sorvo::audio
