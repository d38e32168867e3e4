// Textbook formulas in long double, as plain as possible. They share neither tables nor structure
// with the library.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

namespace sorvo::test::reference {

using Real = long double;
using Complex = std::complex<Real>;
using Reals = std::vector<Real>;
using Complexes = std::vector<Complex>;

inline const Real pi = std::acos(Real(-1));

/// sum over j of x[j] e^(sign 2 pi i j k / n); the inverse (sign +1) divides by n.
inline Complexes dft(const Complexes& x, int sign) {
    const std::size_t n = x.size();
    Complexes roots(n);
    for (std::size_t j = 0; j < n; ++j) {
        roots[j] = std::polar(Real(1), Real(sign) * 2 * pi * Real(j) / Real(n));
    }
    Complexes result(n);
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t j = 0; j < n; ++j) {
            const Complex w = roots[j * k % n];
            result[k] += Complex(x[j].real() * w.real() - x[j].imag() * w.imag(),
                                 x[j].real() * w.imag() + x[j].imag() * w.real());
        }
        if (sign > 0) result[k] /= Real(n);
    }
    return result;
}

/// Periodic Hann (type 1) or Hamming (type 2).
inline Reals window(std::size_t n, int type) {
    Reals result(n);
    const Real a = type == 1 ? 0.5L : 0.54L;
    for (std::size_t i = 0; i < n; ++i) {
        result[i] = a - (1 - a) * std::cos(2 * pi * Real(i) / Real(n));
    }
    return result;
}

/// The window in the middle of a frame, cut or with zeros on both sides; where the numbers differ
/// by an odd one, the zero (or the cut sample) more is at the right.
inline Reals framed_window(std::size_t frame_n, std::size_t win_n, int type) {
    const Reals w = window(win_n, type);
    const long offset = (static_cast<long>(frame_n) - static_cast<long>(win_n)) / 2;
    Reals result(frame_n);
    for (long i = 0; i < static_cast<long>(frame_n); ++i) {
        const long j = i - offset;
        result[static_cast<std::size_t>(i)] =
            j >= 0 && j < static_cast<long>(win_n) ? w[static_cast<std::size_t>(j)] : 0;
    }
    return result;
}

enum class Padding { zeros, reflect, odd, constant };

/// x with `pad_n` samples of extension written out at both ends. The reflection walks to and fro
/// between the ends of x.
template <class T>
std::vector<T> padded(const std::vector<T>& x, std::size_t pad_n, Padding kind) {
    const auto after = [&](const std::vector<T>& signal) {
        std::vector<T> extension;
        std::size_t at = signal.size() - 1;
        bool down = true;
        while (extension.size() < pad_n) {
            if (signal.size() > 1) {
                if (at == 0) down = false;
                if (at == signal.size() - 1) down = true;
                at = down ? at - 1 : at + 1;
            }
            const T edge = signal.back();
            extension.push_back(kind == Padding::zeros      ? T(0)
                                : kind == Padding::constant ? edge
                                : kind == Padding::reflect  ? signal[at]
                                                            : edge + edge - signal[at]);
        }
        return extension;
    };
    std::vector<T> result = after({x.rbegin(), x.rend()});
    std::reverse(result.begin(), result.end());
    result.insert(result.end(), x.begin(), x.end());
    const std::vector<T> end = after(x);
    result.insert(result.end(), end.begin(), end.end());
    return result;
}

/// Factor of every spectrum: norm_type 1 by the window's energy, 2 by the length.
inline Real norm_factor(std::size_t fft_n, std::size_t win_n, int win_type, int norm_type) {
    if (norm_type == 2) return 2 / Real(fft_n);
    if (norm_type == 0) return 1;
    Real energy = 0;
    for (const Real w : window(win_n, win_type)) energy += w * w;
    return 1 / std::sqrt(energy);
}

/// [freq_n][frame_n] spectra of the frames of an already padded signal.
inline Complexes stft(const std::vector<float>& padded_signal, std::size_t frame_n,
                      std::size_t fft_n, std::size_t hop_n, std::size_t win_n, int win_type,
                      int norm_type) {
    const Reals w = framed_window(fft_n, win_n, win_type);
    const Real factor = norm_factor(fft_n, win_n, win_type, norm_type);
    const std::size_t freq_n = fft_n / 2 + 1;
    Complexes result(freq_n * frame_n);
    for (std::size_t t = 0; t < frame_n; ++t) {
        Complexes frame(fft_n);
        for (std::size_t i = 0; i < fft_n; ++i) {
            frame[i] = w[i] * Real(padded_signal.at(t * hop_n + i));
        }
        const Complexes spectrum = dft(frame, -1);
        for (std::size_t k = 0; k < freq_n; ++k) result[k * frame_n + t] = factor * spectrum[k];
    }
    return result;
}

struct Synthesis {
    Reals signal;
    Reals weight;  // the overlap-added squared window
};

/// Weighted overlap-add of [freq_n][frame_n] spectra, divided by the overlap-added squared window
/// where that is above 1e-10.
inline Synthesis istft(const Complexes& spectra, std::size_t frame_n, std::size_t fft_n,
                       std::size_t hop_n, std::size_t win_n, int win_type, Real factor) {
    const Reals w = framed_window(fft_n, win_n, win_type);
    Reals sum((frame_n - 1) * hop_n + fft_n);
    Reals weight(sum.size());
    for (std::size_t t = 0; t < frame_n; ++t) {
        Complexes spectrum(fft_n);
        for (std::size_t k = 0; k < fft_n; ++k) {
            spectrum[k] = k <= fft_n / 2 ? spectra[k * frame_n + t]
                                         : std::conj(spectra[(fft_n - k) * frame_n + t]);
        }
        const Complexes frame = dft(spectrum, +1);
        for (std::size_t i = 0; i < fft_n; ++i) {
            sum[t * hop_n + i] += factor * w[i] * frame[i].real();
            weight[t * hop_n + i] += w[i] * w[i];
        }
    }
    for (std::size_t i = 0; i < sum.size(); ++i) {
        if (weight[i] > 1e-10L) sum[i] /= weight[i];
    }
    return {sum, weight};
}

inline Real hz_to_mel(Real hz, bool htk) {
    if (htk) return 2595 * std::log10(1 + hz / 700);
    return hz < 1000 ? hz * 3 / 200 : 15 + 27 * std::log(hz / 1000) / std::log(6.4L);
}

inline Real mel_to_hz(Real mel, bool htk) {
    if (htk) return 700 * (std::pow(Real(10), mel / 2595) - 1);
    return mel < 15 ? mel * 200 / 3 : 1000 * std::exp((mel - 15) * std::log(6.4L) / 27);
}

/// [mel_n][freq_n] triangles between corners that are equally spaced in mel.
inline Reals mel_bank(std::size_t freq_n, Real f_min, Real f_max, std::size_t mel_n,
                      Real sample_rate, bool area_norm, bool htk) {
    Reals bank(mel_n * freq_n);
    const Real low = hz_to_mel(f_min, htk);
    const Real high = hz_to_mel(f_max, htk);
    const auto corner = [&](std::size_t i) {
        return mel_to_hz(low + (high - low) * Real(i) / Real(mel_n + 1), htk);
    };
    for (std::size_t m = 0; m < mel_n; ++m) {
        const Real left = corner(m);
        const Real centre = corner(m + 1);
        const Real right = corner(m + 2);
        for (std::size_t k = 0; k < freq_n; ++k) {
            const Real hz = sample_rate / 2 * Real(k) / Real(freq_n - 1);
            const Real height = hz <= left || hz >= right ? 0
                                : hz < centre             ? (hz - left) / (centre - left)
                                                          : (right - hz) / (right - centre);
            bank[m * freq_n + k] = area_norm ? height * 2 / (right - left) : height;
        }
    }
    return bank;
}

/// a[0] y[i] = b[0] x[i] + b[1] x[i-1] + ... - a[1] y[i-1] - ..., from rest.
inline Reals difference_equation(const Reals& x, const std::vector<float>& b,
                                 const std::vector<float>& a) {
    Reals y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        for (std::size_t k = 0; k < b.size() && k <= i; ++k) y[i] += Real(b[k]) * x[i - k];
        for (std::size_t k = 1; k < a.size() && k <= i; ++k) y[i] -= Real(a[k]) * y[i - k];
        y[i] /= Real(a[0]);
    }
    return y;
}

/// The same for a filter that has seen the first sample for a long time before.
inline Reals settled_filter(Reals x, const std::vector<float>& b, const std::vector<float>& a) {
    constexpr std::size_t long_time = 3000;
    x.insert(x.begin(), long_time, x.front());
    const Reals y = difference_equation(x, b, a);
    return {y.begin() + long_time, y.end()};
}

/// Settled filtering of the extended signal, forward and then backward, without the extension.
inline Reals forward_backward(const std::vector<float>& x, const std::vector<float>& b,
                              const std::vector<float>& a, Padding kind, std::size_t pad_n) {
    Reals y = padded(Reals(x.begin(), x.end()), pad_n, kind);
    for (int pass = 0; pass < 2; ++pass) {
        y = settled_filter(y, b, a);
        std::reverse(y.begin(), y.end());
    }
    const auto margin = static_cast<std::ptrdiff_t>(pad_n);
    return {y.begin() + margin, y.end() - margin};
}

/// Sinc with a cut-off of fc times the Nyquist frequency, at t samples from its centre, under a
/// Blackman window of 65 samples.
inline Real windowed_sinc(Real t, Real fc) {
    const Real sinc = t == 0 ? fc : std::sin(fc * pi * t) / (pi * t);
    return sinc * (0.42L + 0.5L * std::cos(2 * pi * t / 65) + 0.08L * std::cos(4 * pi * t / 65));
}

/// The signal at a time (in samples), from the 65 samples around it.
inline Real interpolate(const std::vector<float>& x, Real time, Real fc) {
    const long nearest = std::lround(time);
    Real sum = 0;
    for (long i = nearest - 32; i <= nearest + 32; ++i) {
        if (i < 0 || i >= static_cast<long>(x.size())) continue;
        sum += Real(x[static_cast<std::size_t>(i)]) * windowed_sinc(time - Real(i), fc);
    }
    return sum;
}

}  // namespace sorvo::test::reference
