#include "mel/mel_spectrogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "elementwise/complex_norm.h"
#include "fft/fft_table.h"
#include "mel/mel_conversion.h"
#include "mel/mfb_table.h"
#include "stft/framing.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"
#include "util/zeros.h"

namespace sorvo::audio {

void mel_spectrogram(float* dst, const float* src, int sample_n, int sample_rate, int fft_n,
                     int hop_n, int win_n, int win_type, int max_frame_n, int center, float power,
                     int fft_norm_type, float f_min, float f_max, int mel_n, int mel_norm,
                     int mel_formula) {
    const int frame_n = std::min(get_frame_len(sample_n, fft_n, hop_n, center), max_frame_n);
    if (frame_n < 1) {
        return;
    }
    const int freq_n = fft_n / 2 + 1;
    const std::vector<float>& fft_table = FftTable::instance().ref_table(fft_n);
    const std::vector<float>& window = WindowTable::instance().ref_table(win_n, win_type);
    const std::vector<std::vector<float>>& bank = MFBTable::instance().ref_table(
        freq_n, f_min, f_max, mel_n, sample_rate, mel_norm, mel_formula != 0);
    auto frame = make_zeros<float>(static_cast<std::uint64_t>(fft_n));
    auto spectrum = make_zeros<float>(2 * static_cast<std::uint64_t>(fft_n));
    auto power_spec = make_zeros<float>(static_cast<std::uint64_t>(freq_n));
    auto mel = make_zeros<float>(static_cast<std::uint64_t>(mel_n));
    for (std::size_t t = 0; t < static_cast<std::size_t>(frame_n); ++t) {
        extract_frame(frame, src, sample_n, static_cast<std::int64_t>(t), hop_n, center);
        stft_core(spectrum, frame, fft_n, fft_table, window, fft_norm_type);
        complex_norm_1d(power_spec, spectrum, power);
        convert_freq_to_mel_1d(mel, power_spec, bank, mel_n);
        for (std::size_t m = 0; m < mel.size(); ++m) {
            dst[m * static_cast<std::size_t>(frame_n) + t] = mel[m];
        }
    }
}

}  // namespace sorvo::audio
