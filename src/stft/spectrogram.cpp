#include "stft/spectrogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "elementwise/complex_norm.h"
#include "fft/fft_table.h"
#include "stft/framing.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"
#include "util/zeros.h"

namespace sorvo::audio {

void spectrogram(float* dst, const float* src, int sample_n, int fft_n, int hop_n, int win_n,
                 int win_type, int max_frame_n, int center, float power, int norm_type) {
    const int frame_n = std::min(max_frame_n, get_frame_len(sample_n, fft_n, hop_n, center));
    if (frame_n < 1) {
        return;
    }
    const std::vector<float>& fft_table = FftTable::instance().ref_table(fft_n);
    const std::vector<float>& window = WindowTable::instance().ref_table(win_n, win_type);
    auto frame = make_zeros<float>(static_cast<std::uint64_t>(fft_n));
    auto out = make_zeros<float>(2 * static_cast<std::uint64_t>(fft_n));
    const auto freq_n = static_cast<std::size_t>(fft_n) / 2 + 1;
    const std::size_t row = 2 * static_cast<std::size_t>(max_frame_n);
    for (std::size_t t = 0; t < static_cast<std::size_t>(frame_n); ++t) {
        extract_frame(frame, src, sample_n, static_cast<std::int64_t>(t), hop_n, center);
        stft_core(out, frame, fft_n, fft_table, window, norm_type);
        if (power > 0.0F) {
            complex_norm_1d(out, power);
        }
        for (std::size_t k = 0; k < freq_n; ++k) {
            dst[k * row + 2 * t] = out[2 * k];
            dst[k * row + 2 * t + 1] = out[2 * k + 1];
        }
    }
}

}  // namespace sorvo::audio
