#include "mel/mel_spectrogram.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fft/fft_table.h"
#include "math/complex_norm.h"
#include "math/power.h"
#include "mel/mel_conversion.h"
#include "mel/mel_kernels.h"
#include "stft/frame_spectra.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"
#include "util/zeros.h"

namespace sorvo::audio {

void mel_spectrogram_plain(float* dst, const Signal& signal, const Analysis& analysis,
                           const MelFilterBankParam& mel, int max_frame_n) {
    const std::vector<float>& fft_table = FftTable::instance().ref_table(analysis.fft_n);
    const std::vector<float>& window =
        WindowTable::instance().ref_table(analysis.win_n, analysis.win_type);
    const std::vector<std::vector<float>>& bank = MFBTable::instance().ref_table(mel);
    auto frame = make_zeros<float>(static_cast<std::uint64_t>(analysis.fft_n));
    auto spectrum = make_zeros<float>(2 * static_cast<std::uint64_t>(analysis.fft_n));
    auto powers = make_zeros<float>(frame.size() / 2 + 1);
    auto bands = make_zeros<float>(bank.size());
    const int frame_n = frame_count(signal, analysis, max_frame_n);
    for (int t = 0; t < frame_n; ++t) {
        extract_frame(frame, signal.samples, signal.n, t, analysis.hop_n, analysis.center);
        stft_core(spectrum, frame, analysis.fft_n, fft_table, window, analysis.norm_type);
        complex_norm_1d(powers, spectrum, analysis.power);
        convert_freq_to_mel_1d(bands, powers, bank, mel.mel_n);
        for (std::size_t m = 0; m < bands.size(); ++m) {
            dst[m * static_cast<std::size_t>(frame_n) + static_cast<std::size_t>(t)] = bands[m];
        }
    }
}

void mel_spectrogram(float* dst, const Signal& signal, const Analysis& analysis,
                     const MelFilterBankParam& mel, int max_frame_n, SimdLevel level) {
    const int frame_n = frame_count(signal, analysis, max_frame_n);
    if (frame_n < 1) {
        return;
    }
    if (!batches_pay(analysis, frame_n)) {
        mel_spectrogram_plain(dst, signal, analysis, mel, max_frame_n);
        return;
    }
    const float power = analysis.power;
    const bool raised = !is_made_by_kernels(power);
    const auto form = power == 1.0F ? FrameForm::roots : FrameForm::squares;
    FrameSpectra spectra(signal, analysis, frame_n, form, level);
    const std::vector<MelBand>& bands = MFBTable::instance().ref_bands(mel);
    const MelKernels& kernels = mel_kernels(level);
    const auto freq_n = static_cast<std::size_t>(mel.freq_n);
    auto outside = make_zeros<float>(outside_n(freq_n));
    MelJob job = {dst,          static_cast<std::size_t>(frame_n),
                  nullptr,      spectra.row_n(),
                  freq_n,       bands.data(),
                  bands.size(), 0};
    spectra.for_each_block([&](std::size_t t, std::size_t n) {
        float* const rows = spectra.rows(0);
        bool finite = spectra.is_finite();
        for (std::size_t k = 0; raised && k < freq_n; ++k) {
            float* const row = rows + k * spectra.row_n();
            raise_to_power(row, row, n, power * 0.5F, level);
            // The squares are finite, but a high power of them may not be.
            finite = finite && (power <= 2.0F || kernels.all_finite(row, n));
        }
        job.dst = dst + t;
        job.src = rows;
        job.frame_n = n;
        if (finite) {
            kernels.apply_bands(job);
        } else {
            kernels.apply_bands_to_any(job, outside.data());
        }
    });
}

}  // namespace sorvo::audio
