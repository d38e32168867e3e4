#include "stft/stft_core.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "fft/fft.h"

namespace sorvo::audio {
namespace {

void scale(std::vector<float>& data, float factor) {
    for (float& x : data) {
        x *= factor;
    }
}

}  // namespace

WindowSpan::WindowSpan(std::ptrdiff_t frame_n, std::ptrdiff_t window_n)
    : offset((frame_n - window_n) / 2),
      begin(std::max<std::ptrdiff_t>(offset, 0)),
      end(std::min(offset + window_n, frame_n)),
      cleared(std::min(frame_n - offset, frame_n)) {}

void apply_window(std::vector<float>& frame, const std::vector<float>& window) {
    const WindowSpan span(static_cast<std::ptrdiff_t>(frame.size()),
                          static_cast<std::ptrdiff_t>(window.size()));
    const float* const w = window.data();
    float* const x = frame.data();
    for (std::ptrdiff_t i = span.begin; i < span.end; ++i) {
        x[i] *= w[i - span.offset];
    }
    for (std::ptrdiff_t i = span.end; i < span.cleared; ++i) {
        x[i] *= 0.0F;
    }
    std::fill(x, x + span.begin, 0.0F);
    std::fill(x + span.cleared, x + frame.size(), 0.0F);
}

void scale_stft_torch(std::vector<float>& data, const std::vector<float>& window) {
    float energy = 0.0F;
    for (const float w : window) {
        energy += w * w;
    }
    scale(data, 1.0F / ::sqrtf(energy));
}

void scale_stft_scipy(std::vector<float>& data, int fft_n) {
    scale(data, 2.0F / static_cast<float>(fft_n));
}

void stft_core(std::vector<float>& out, std::vector<float>& frame, int fft_n,
               const std::vector<float>& fft_table, const std::vector<float>& window,
               int norm_type) {
    apply_window(frame, window);
    fft_pre_process(out, frame.data(), fft_n);
    fft(out, fft_n, fft_table);
    if (norm_type == 2) {
        scale_stft_scipy(out, fft_n);
    } else if (norm_type == 1) {
        scale_stft_torch(out, window);
    }
}

}  // namespace sorvo::audio
