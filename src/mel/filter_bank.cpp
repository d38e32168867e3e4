#include "mel/filter_bank.h"

#include <cstddef>
#include <cstdint>

#include "mel/mel_scale.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

/// The mel_n + 2 corners of the triangles, equally spaced in mel, in Hz.
std::vector<float> corner_frequencies(float f_min, float f_max, int mel_n, bool htk) {
    const auto hz_to_mel = htk ? hz_to_mel_htk : hz_to_mel_slaney;
    const auto mel_to_hz = htk ? mel_to_hz_htk : mel_to_hz_slaney;
    const float m_min = hz_to_mel(f_min);
    const float m_max = hz_to_mel(f_max);
    const float mel_step = (m_max - m_min) / (static_cast<float>(mel_n) + 2.0F + (-1.0F));
    auto corners = make_zeros<float>(static_cast<std::uint64_t>(mel_n) + 2);
    for (std::size_t i = 0; i < corners.size(); ++i) {
        corners[i] = mel_to_hz(static_cast<float>(i) * mel_step + m_min);
    }
    return corners;
}

/// Height of a triangle; `lo` is minus its rising edge, `hi` its falling edge. Ties and NaN give
/// the rising edge.
float triangle(float lo, float hi) {
    if (lo > 0.0F || 0.0F > hi) {
        return 0.0F;
    }
    return hi < -lo ? hi : -lo;
}

}  // namespace

void create_fb_matrix(std::vector<std::vector<float>>& rows, int freq_n, float f_min, float f_max,
                      int mel_n, int sample_rate, int mel_norm, bool htk) {
    const std::vector<float> corners = corner_frequencies(f_min, f_max, mel_n, htk);
    auto inv_diff = make_zeros<float>(corners.size() - 1);
    for (std::size_t i = 0; i < inv_diff.size(); ++i) {
        inv_diff[i] = 1.0F / (corners[i + 1] - corners[i]);
    }
    const float bin_step =
        (static_cast<float>(sample_rate) * 0.5F) / (static_cast<float>(freq_n) + (-1.0F));
    const auto bin_n = static_cast<std::size_t>(freq_n);
    const auto band_n = static_cast<std::size_t>(mel_n);
    for (std::size_t m = 0; m < band_n; ++m) {
        float* const row = rows[m].data();
        for (std::size_t j = 0; j < bin_n; ++j) {
            const float bin = static_cast<float>(j) * bin_step;
            row[j] = triangle((corners[m] - bin) * inv_diff[m],
                              (corners[m + 2] - bin) * inv_diff[m + 1]);
        }
        if (mel_norm != 0) {
            const float area_norm = 2.0F / (corners[m + 2] - corners[m]);
            for (std::size_t j = 0; j < bin_n; ++j) {
                row[j] *= area_norm;
            }
        }
    }
}

}  // namespace sorvo::audio
