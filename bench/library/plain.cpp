#include "plain.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "elementwise/decibel.h"
#include "fft/fft.h"
#include "fft/fft_table.h"
#include "filter/zi_coef.h"
#include "math/called.h"
#include "mel/mel_conversion.h"
#include "mel/mfb_table.h"
#include "resample/resample_filter_table.h"
#include "stft/framing.h"
#include "stft/inverse_spectrogram.h"
#include "stft/stft_core.h"
#include "stft/window_table.h"

using namespace sorvo::audio;

namespace sorvo::bench {
namespace {

constexpr int hann = 1;

/// Calls emit(t, spectrum) for every frame.
template <class Emit>
void for_each_spectrum(const float* src, int sample_n, int frame_n, const FrameParam& param,
                       Emit emit) {
    const int fft_n = param.fft_n;
    const int pad_n = param.centred ? fft_n / 2 : 0;
    const auto& table = FftTable::instance().ref_table(fft_n);
    const auto& window = WindowTable::instance().ref_table(fft_n, hann);
    std::vector<float> frame(static_cast<std::size_t>(fft_n));
    std::vector<float> spectrum(2 * frame.size());
    for (int t = 0; t < frame_n; ++t) {
        extract_segment_sample_center_reflect(frame, src, sample_n, t * param.hop_n, pad_n);
        stft_core(spectrum, frame, fft_n, table, window, 0);
        emit(static_cast<std::size_t>(t), spectrum);
    }
}

/// Transposed direct form II in double; the state is stored as State. `order` state values.
template <class State, class Out, class In>
void run_plain_filter(Out* dst, const In* src, std::ptrdiff_t n, std::ptrdiff_t step,
                      const std::vector<double>& b, const std::vector<double>& a,
                      std::vector<State> z) {
    const std::size_t order = b.size() - 1;
    for (std::ptrdiff_t j = 0; j < n; ++j) {
        const std::ptrdiff_t i = step > 0 ? j : n - 1 - j;
        const auto x = static_cast<double>(src[i]);
        const double y = static_cast<double>(z[0]) + b[0] * x;
        for (std::size_t k = 1; k < order; ++k) {
            z[k - 1] = static_cast<State>(b[k] * x + static_cast<double>(z[k]) - a[k] * y);
        }
        z[order - 1] = static_cast<State>(b[order] * x - a[order] * y);
        dst[i] = static_cast<Out>(y);
    }
}

std::vector<double> padded(const std::vector<float>& coef, std::size_t n) {
    std::vector<double> result(coef.begin(), coef.end());
    result.resize(n);
    return result;
}

}  // namespace

void plain_fft(float* dst, const float* src, int fft_n) {
    std::vector<float> data(2 * static_cast<std::size_t>(fft_n));
    fft_pre_process(data, src, fft_n);
    fft(data, fft_n, FftTable::instance().ref_table(fft_n));
    std::copy(data.begin(), data.end(), dst);
}

void plain_spectrogram(float* dst, const float* src, int sample_n, int frame_n,
                       const FrameParam& param) {
    const auto freq_n = static_cast<std::size_t>(param.fft_n) / 2 + 1;
    const std::size_t row = 2 * static_cast<std::size_t>(frame_n);
    for_each_spectrum(src, sample_n, frame_n, param,
                      [&](std::size_t t, const std::vector<float>& x) {
                          for (std::size_t k = 0; k < freq_n; ++k) {
                              float* const out = dst + k * row + 2 * t;
                              const float re = x[2 * k];
                              const float im = x[2 * k + 1];
                              if (param.power > 0.0F) {
                                  out[0] = ::powf(im * im + re * re, param.power * 0.5F);
                                  out[1] = 0.0F;
                              } else {
                                  out[0] = re;
                                  out[1] = im;
                              }
                          }
                      });
}

void plain_mel(float* dst, const float* src, int sample_n, int frame_n, const FrameParam& param) {
    const int freq_n = param.fft_n / 2 + 1;
    const auto& bank =
        MFBTable::instance().ref_table(freq_n, 0.0F, static_cast<float>(param.sample_rate) / 2.0F,
                                       param.mel_n, param.sample_rate, 1, false);
    std::vector<float> power(static_cast<std::size_t>(freq_n));
    std::vector<float> mel(static_cast<std::size_t>(param.mel_n));
    for_each_spectrum(
        src, sample_n, frame_n, param, [&](std::size_t t, const std::vector<float>& x) {
            for (std::size_t k = 0; k < power.size(); ++k) {
                power[k] =
                    ::powf(x[2 * k + 1] * x[2 * k + 1] + x[2 * k] * x[2 * k], param.power * 0.5F);
            }
            convert_freq_to_mel_1d(mel, power, bank, param.mel_n);
            for (std::size_t m = 0; m < mel.size(); ++m) {
                dst[m * static_cast<std::size_t>(frame_n) + t] = mel[m];
            }
        });
}

void plain_inverse(float* dst, const float* src, int frame_n, int sample_n,
                   const FrameParam& param) {
    const auto fft_n = static_cast<std::size_t>(param.fft_n);
    const auto hop_n = static_cast<std::size_t>(param.hop_n);
    const auto row = 2 * static_cast<std::size_t>(frame_n);
    const auto& table = FftTable::instance().ref_inv_table(param.fft_n);
    const auto& window = WindowTable::instance().ref_table(param.fft_n, hann);
    std::vector<float> spectrum(2 * fft_n);
    std::vector<float> frame(2 * fft_n);
    std::vector<float> sum(2 * (static_cast<std::size_t>(frame_n - 1) * hop_n + fft_n));
    for (std::size_t t = 0; t < static_cast<std::size_t>(frame_n); ++t) {
        for (std::size_t k = 0; k <= fft_n / 2; ++k) {
            spectrum[2 * k] = src[k * row + 2 * t];
            spectrum[2 * k + 1] = src[k * row + 2 * t + 1];
        }
        for (std::size_t k = fft_n / 2 + 1; k < fft_n; ++k) {
            spectrum[2 * k] = spectrum[2 * (fft_n - k)];
            spectrum[2 * k + 1] = -spectrum[2 * (fft_n - k) + 1];
        }
        istft_core(frame, spectrum, param.fft_n, table, window, 0);
        for (std::size_t i = 0; i < frame.size(); ++i) {
            sum[2 * t * hop_n + i] += frame[i];
        }
    }
    scale_istft_window_suqare_sum(sum, window, param.fft_n, param.hop_n, param.fft_n, frame_n);
    for (std::size_t i = 0; i < static_cast<std::size_t>(sample_n); ++i) {
        dst[i] = sum[2 * (i + fft_n / 2)];
    }
}

void plain_resample(float* dst, const float* src, int dst_rate, int dst_n, int src_rate,
                    int src_n) {
    ResampleFilterTable& table = ResampleFilterTable::instance();
    const auto& coef = table.ref_coef(dst_rate, src_rate);
    const auto& diff = table.ref_diff(dst_rate, src_rate);
    const auto& kiro = table.ref_kiro(dst_rate, src_rate);
    constexpr std::size_t tap_n = ResampleFilterTable::tap_n;
    std::vector<float> buffer(static_cast<std::size_t>(src_n) + tap_n - 1);
    std::copy_n(src, src_n, buffer.begin() + tap_n / 2);
    std::size_t pos = 0;
    std::size_t slot = 0;
    std::ptrdiff_t i = 0;
    for (; i < dst_n && pos + tap_n < buffer.size(); ++i) {
        const std::vector<double>& taps = coef[static_cast<std::size_t>(kiro[slot])];
        double sum = 0.0;
        for (std::size_t k = 0; k < tap_n; ++k) {
            sum += static_cast<double>(buffer[pos + k]) * taps[tap_n - 1 - k];
        }
        dst[i] = static_cast<float>(sum);
        pos += static_cast<std::size_t>(diff[slot]);
        slot = (slot + 1) % kiro.size();
    }
    std::fill(dst + i, dst + dst_n, 0.0F);
}

void plain_filter(float* dst, const float* src, int n, const std::vector<float>& b,
                  const std::vector<float>& a) {
    const std::size_t coef_n = std::max(b.size(), a.size());
    run_plain_filter(dst, src, n, 1, padded(b, coef_n), padded(a, coef_n),
                     std::vector<float>(coef_n - 1));
}

void plain_filtfilt(float* dst, const float* src, int n, const std::vector<float>& b,
                    const std::vector<float>& a) {
    const std::size_t coef_n = std::max(b.size(), a.size());
    const auto pad_n = static_cast<int>(3 * coef_n);
    std::vector<float> x(static_cast<std::size_t>(n + 2 * pad_n));
    std::vector<double> y(x.size());
    extract_segment_sample_center_odd(x, src, n, 0, pad_n);
    std::vector<double> zi(coef_n - 1);
    create_zi_coef(zi.data(), b.data(), a.data(), static_cast<int>(zi.size()),
                   static_cast<int>(b.size()), static_cast<int>(a.size()));
    const auto scaled_zi = [&zi](double factor) {
        std::vector<double> z = zi;
        for (double& value : z) value *= factor;
        return z;
    };
    const auto length = static_cast<std::ptrdiff_t>(x.size());
    run_plain_filter(y.data(), x.data(), length, 1, padded(b, coef_n), padded(a, coef_n),
                     scaled_zi(static_cast<double>(x.front())));
    run_plain_filter(y.data(), y.data(), length, -1, padded(b, coef_n), padded(a, coef_n),
                     scaled_zi(y.back()));
    std::transform(y.begin() + pad_n, y.end() - pad_n, dst,
                   [](double value) { return static_cast<float>(value); });
}

void plain_complex_norm(float* dst, const float* src, int n, float power) {
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        const float re = src[2 * i];
        const float im = src[2 * i + 1];
        dst[i] = ::powf(im * im + re * re, power * 0.5F);
    }
}

void plain_decibels(float* dst, const float* src, int n) {
    const float ref = std::max(1e-10F, *std::max_element(src, src + n));
    for (std::ptrdiff_t i = 0; i < n; ++i) dst[i] = std::max(-80.0F, power_to_db(src[i], ref));
}

void plain_log1p(float* dst, const float* src, int n) {
    call_log1pf(dst, src, static_cast<std::size_t>(n));
}

void plain_mag_phase(float* dst, const float* src, int n, bool unit) {
    const auto count = static_cast<std::size_t>(n);
    plain_complex_norm(dst, src, n, 1.0F);
    float* const phase = dst + count;
    if (!unit) {
        call_atan2f(phase, src, count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        float angle = 0.0F;
        call_atan2f(&angle, src + 2 * i, 1);
        call_cexpf(phase + 2 * i, &angle, 1);
    }
}

void plain_standardize(float* dst, const float* src, int n) {
    float sum = 0.0F;
    float sum_of_squares = 0.0F;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        sum += src[i];
        sum_of_squares += src[i] * src[i];
    }
    const float inv = 1.0F / static_cast<float>(n);
    const float mean = sum * inv;
    const float scale = 1.0F / ::sqrtf(sum_of_squares * inv - mean * mean);
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        dst[i] = (src[i] - mean) * scale;
    }
}

}  // namespace sorvo::bench
