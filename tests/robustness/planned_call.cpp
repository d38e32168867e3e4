#include "robustness/planned_call.h"

#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <sstream>
#include <utility>

namespace sorvo::audio::test {
namespace {

/// A buffer among the arguments of a call.
struct Buffer {
    std::size_t i;
};
constexpr Buffer b0{0}, b1{1}, b2{2}, b3{3}, b4{4};

template <class Parameter>
Parameter argument(const std::vector<void*>& /*buffers*/, Parameter value) {
    return value;
}
template <class Parameter>
Parameter argument(const std::vector<void*>& buffers, Buffer buffer) {
    return static_cast<Parameter>(buffers[buffer.i]);
}

/// Draws arguments, keeps their text, and collects what the header says.
class Planner {
  public:
    Planner(ArgumentSource& source, const char* name) : source_(source) { text_ << name << '('; }

    int integer(const char* name) { return show(name, source_.integer()); }
    /// Accepted are the values from `first` to `last`; mostly one of 0 ... last, or anything.
    int option(const char* name, int first, int last) {
        const int value = source_.choice(8) == 0 ? source_.integer() : source_.choice(last + 1);
        require(value >= first && value <= last);
        return show(name, value);
    }
    float real(const char* name) { return show(name, source_.real()); }

    void require(bool condition) { call_.valid = call_.valid && condition; }

    /// An array argument; once in a while it is null, which only an optional one may be.
    void buffer(double element_n, bool optional = false) {
        const bool null = source_.choice(24) == 0;
        require(!null || optional);
        nulls_.push_back(null);
        call_.buffer_bytes.push_back(null ? 0.0 : 4.0 * std::max(element_n, 0.0));
    }

    /// The call of `function` with these arguments, in which b0, b1, ... stand for the buffers.
    template <class... Parameters, class... Arguments>
    PlannedCall finish(double work, double storage, int (*function)(Parameters...),
                       Arguments... arguments) {
        for (const bool null : nulls_) {
            text_ << (null ? " null" : " buffer");
        }
        call_.text = text_.str() + " )";
        call_.work = work;
        call_.storage = storage;
        call_.invoke = [=, nulls = nulls_](const std::vector<void*>& buffers) {
            std::vector<void*> given = buffers;
            for (std::size_t i = 0; i < nulls.size(); ++i) {
                given[i] = nulls[i] ? nullptr : given[i];
            }
            return function(argument<Parameters>(given, arguments)...);
        };
        return call_;
    }

  private:
    template <class Number>
    Number show(const char* name, Number value) {
        text_ << name << '=' << value << ' ';
        return value;
    }

    ArgumentSource& source_;
    std::ostringstream text_;
    std::vector<bool> nulls_;
    PlannedCall call_;
};

/// Operations of one transform: the length times the sum of its prime factors.
double transform_work(int n) {
    double sum = 0.0;
    std::int64_t rest = std::max(n, 1);
    for (std::int64_t d = 2; d * d <= rest; ++d) {
        for (; rest % d == 0; rest /= d) {
            sum += static_cast<double>(d);
        }
    }
    return 4.0 * n * (sum + static_cast<double>(rest) + 10.0);
}

double frames(double sample_n, double hop_n, double max_frame_n) {
    return hop_n <= 0.0 ? 0.0 : std::max(0.0, std::min(max_frame_n, sample_n / hop_n + 2.0));
}

PlannedCall plan_transform(ArgumentSource& source, bool inverse) {
    Planner p(source, inverse ? "IFFT" : "FFT");
    const int n = p.integer("fft_n");
    p.require(n >= 1);
    p.buffer(2.0 * n);
    p.buffer(inverse ? 2.0 * n : n);
    const auto function = inverse ? sorvoAudioIFFT : sorvoAudioFFT;
    return p.finish(transform_work(n), 32.0 * n, function, b0, b1, n);
}

PlannedCall plan_window(ArgumentSource& source) {
    Planner p(source, "GetWindow");
    const int n = p.integer("window_n");
    const int type = p.option("win_type", 1, 2);
    p.require(n >= 1);
    p.buffer(n);
    return p.finish(20.0 * n, 8.0 * n, sorvoAudioGetWindow, b0, n, type);
}

PlannedCall plan_frame_len(ArgumentSource& source) {
    Planner p(source, "GetFrameLen");
    const int sample_n = p.integer("sample_n");
    const int fft_n = p.integer("fft_n");
    const int hop_n = p.integer("hop_n");
    const int center = p.option("center", 0, 2);
    p.require(sample_n > 0 && fft_n > 0 && hop_n >= 0);
    p.buffer(1);
    return p.finish(1.0, 0.0, sorvoAudioGetFrameLen, b0, sample_n, fft_n, hop_n, center);
}

PlannedCall plan_spectrogram(ArgumentSource& source, bool mel) {
    Planner p(source, mel ? "GetMelSpectrogram" : "GetSpectrogram");
    const int sample_n = p.integer("sample_n");
    const int fft_n = p.integer("fft_n");
    const int hop_n = p.integer("hop_n");
    const int win_n = p.integer("win_n");
    const int win_type = p.option("win_type", 1, 2);
    const int max_frame_n = p.integer("max_frame_n");
    const int center = p.option("center", 0, 2);
    const float power = p.real("power");
    const int norm_type = p.option("norm_type", 0, 2);
    p.require(sample_n > 0 && fft_n > 0 && hop_n >= 0 && win_n > 0 && max_frame_n > 0);
    p.require(!(power < 0.0F));
    const double freq_n = fft_n / 2 + 1;
    const double frame_work = transform_work(fft_n) + 100.0 * freq_n;
    const double work = frames(sample_n, hop_n, max_frame_n) * frame_work + 20.0 * win_n;
    const double storage = 64.0 * fft_n + 8.0 * win_n;
    if (!mel) {
        p.buffer(freq_n * max_frame_n * 2.0);
        p.buffer(sample_n);
        return p.finish(work, storage, sorvoAudioGetSpectrogram, b0, b1, sample_n, fft_n, hop_n,
                        win_n, win_type, max_frame_n, center, power, norm_type);
    }
    const int sample_rate = p.integer("sample_rate");
    const float f_min = p.real("f_min");
    const float f_max = p.real("f_max");
    const int mel_n = p.integer("mel_n");
    const int mel_norm = p.option("mel_norm", 0, 1);
    const int mel_formula = p.option("mel_formula", 0, 1);
    p.require(sample_rate >= 1 && mel_n >= 1 && fft_n / 2 >= mel_n);
    p.require(!(f_min < 0.0F) && !(f_max < 0.0F) && !(f_min >= f_max));
    p.buffer(static_cast<double>(mel_n) * max_frame_n);
    p.buffer(sample_n);
    return p.finish(work + (frames(sample_n, hop_n, max_frame_n) + 10.0) * freq_n * mel_n,
                    storage + 4.0 * freq_n * mel_n, sorvoAudioGetMelSpectrogram, b0, b1, sample_n,
                    sample_rate, fft_n, hop_n, win_n, win_type, max_frame_n, center, power,
                    norm_type, f_min, f_max, mel_n, mel_norm, mel_formula);
}

PlannedCall plan_inverse(ArgumentSource& source) {
    Planner p(source, "GetInverseSpectrogram");
    const int frame_n = p.integer("frame_n");
    const int freq_n = p.integer("freq_n");
    const int hop_n = p.integer("hop_n");
    const int win_n = p.integer("win_n");
    const int win_type = p.option("win_type", 1, 2);
    const int max_sample_n = p.integer("max_sample_n");
    const int center = p.option("center", 0, 2);
    const int norm_type = p.option("norm_type", 0, 2);
    p.require(frame_n > 0 && freq_n > 1 && hop_n >= 0 && win_n > 0 && max_sample_n > 0);
    p.buffer(max_sample_n);
    p.buffer(2.0 * frame_n * freq_n);
    const double fft_n = 2.0 * freq_n - 2.0;
    const double length = static_cast<double>(frame_n) * hop_n + fft_n;
    return p.finish(frame_n * transform_work(std::abs(fft_n) < 2e9 ? static_cast<int>(fft_n) : 1) +
                        20.0 * win_n + length,
                    64.0 * fft_n + 16.0 * length + 12.0 * win_n, sorvoAudioGetInverseSpectrogram,
                    b0, b1, frame_n, freq_n, hop_n, win_n, win_type, max_sample_n, center,
                    norm_type);
}

PlannedCall plan_sample_len(ArgumentSource& source) {
    Planner p(source, "GetSampleLen");
    const int frame_n = p.integer("frame_n");
    const int freq_n = p.integer("freq_n");
    const int hop_n = p.integer("hop_n");
    const int center = p.option("center", 0, 2);
    p.require(frame_n > 0 && freq_n > 0 && hop_n >= 0);
    p.buffer(1);
    return p.finish(1.0, 0.0, sorvoAudioGetSampleLen, b0, frame_n, freq_n, hop_n, center);
}

PlannedCall plan_bank(ArgumentSource& source) {
    Planner p(source, "GetFBMatrix");
    const int freq_n = p.integer("freq_n");
    const float f_min = p.real("f_min");
    const float f_max = p.real("f_max");
    const int mel_n = p.integer("mel_n");
    const int sample_rate = p.integer("sample_rate");
    const int mel_norm = p.option("mel_norm", 0, 1);
    const int mel_formula = p.option("mel_formula", 0, 1);
    p.require(freq_n >= 1 && mel_n >= 1 && freq_n > mel_n && sample_rate >= 1);
    p.require(!(f_min < 0.0F) && !(f_max < 0.0F) && !(f_min >= f_max));
    const double size = static_cast<double>(freq_n) * mel_n;
    p.buffer(size);
    return p.finish(10.0 * size, 6.0 * size + 64.0 * mel_n, sorvoAudioGetFBMatrix, b0, freq_n,
                    f_min, f_max, mel_n, sample_rate, mel_norm, mel_formula);
}

PlannedCall plan_to_mel(ArgumentSource& source) {
    Planner p(source, "ConvertToMel");
    const int freq_n = p.integer("freq_n");
    const int frame_n = p.integer("frame_n");
    const int mel_n = p.integer("mel_n");
    p.require(freq_n >= 1 && mel_n >= 1 && freq_n > mel_n && frame_n >= 1);
    p.buffer(static_cast<double>(mel_n) * frame_n);
    p.buffer(static_cast<double>(freq_n) * frame_n);
    p.buffer(static_cast<double>(mel_n) * freq_n);
    return p.finish(2.0 * mel_n * freq_n * frame_n, 8.0 * mel_n, sorvoAudioConvertToMel, b0, b1, b2,
                    freq_n, frame_n, mel_n);
}

PlannedCall plan_filter(ArgumentSource& source) {
    Planner p(source, "LinerFilter");
    const int dst_n = p.integer("dst_n");
    const int src_n = p.integer("src_n");
    const int n_coef_n = p.integer("n_coef_n");
    const int d_coef_n = p.integer("d_coef_n");
    const int zi_n = p.integer("zi_n");
    p.require(dst_n > 0 && src_n > 0 && n_coef_n > 0 && d_coef_n > 0);
    p.buffer(dst_n);
    p.buffer(src_n);
    p.buffer(n_coef_n);
    p.buffer(d_coef_n);
    p.buffer(zi_n, true);
    const double order = std::max(n_coef_n, d_coef_n);
    return p.finish(order * (std::min(dst_n, src_n) + 10.0), 24.0 * order, sorvoAudioLinerFilter,
                    b0, b1, b2, b3, b4, dst_n, src_n, n_coef_n, d_coef_n, zi_n);
}

PlannedCall plan_zi(ArgumentSource& source) {
    Planner p(source, "GetLinerFilterZiCoef");
    const int dst_n = p.integer("dst_n");
    const int n_coef_n = p.integer("n_coef_n");
    const int d_coef_n = p.integer("d_coef_n");
    p.require(dst_n > 0 && n_coef_n > 0 && d_coef_n > 0);
    p.buffer(dst_n);
    p.buffer(n_coef_n);
    p.buffer(d_coef_n);
    const double order = std::max(n_coef_n, d_coef_n);
    return p.finish(10.0 * order + dst_n, 24.0 * order, sorvoAudioGetLinerFilterZiCoef, b0, b1, b2,
                    dst_n, n_coef_n, d_coef_n);
}

PlannedCall plan_filtfilt(ArgumentSource& source) {
    Planner p(source, "FilterFilter");
    const int dst_n = p.integer("dst_n");
    const int src_n = p.integer("src_n");
    const int n_coef_n = p.integer("n_coef_n");
    const int d_coef_n = p.integer("d_coef_n");
    const int pad_type = p.option("pad_type", 0, 3);
    const int pad_len = p.integer("pad_len");
    p.require(dst_n > 0 && src_n > 0 && n_coef_n > 0 && d_coef_n > 0 && pad_len >= 0);
    p.require((pad_type != 1 && pad_type != 2) || pad_len == 0 || pad_len < src_n);
    p.buffer(dst_n);
    p.buffer(src_n);
    p.buffer(n_coef_n);
    p.buffer(d_coef_n);
    const double order = std::max(n_coef_n, d_coef_n);
    const double length = src_n + 2.0 * (pad_type == 0 ? 0.0 : pad_len);
    return p.finish(3.0 * order * (length + 10.0), 48.0 * order + 12.0 * length,
                    sorvoAudioFilterFilter, b0, b1, b2, b3, dst_n, src_n, n_coef_n, d_coef_n,
                    pad_type, pad_len);
}

PlannedCall plan_resample(ArgumentSource& source) {
    Planner p(source, "Resample");
    const int dst_rate = p.integer("dst_sample_rate");
    const int dst_n = p.integer("dst_n");
    const int src_rate = p.integer("src_sample_rate");
    const int src_n = p.integer("src_n");
    p.require(dst_rate > 0 && dst_n > 0 && src_rate > 0 && src_n > 0);
    p.buffer(dst_n);
    p.buffer(src_n);
    const double up =
        static_cast<double>(dst_rate) / std::gcd(std::max(1, dst_rate), std::max(1, src_rate));
    return p.finish(5000.0 * std::min(up, 1e6) + 100.0 * dst_n + src_n, 700.0 * up + 8.0 * src_n,
                    sorvoAudioResample, b0, b1, dst_rate, dst_n, src_rate, src_n);
}

PlannedCall plan_resample_len(ArgumentSource& source) {
    Planner p(source, "GetResampleLen");
    const int dst_rate = p.integer("dst_sample_rate");
    const int src_n = p.integer("src_sample_n");
    const int src_rate = p.integer("src_sample_rate");
    p.require(dst_rate > 0 && src_n > 0 && src_rate > 0);
    p.buffer(1);
    return p.finish(1.0, 0.0, sorvoAudioGetResampleLen, b0, dst_rate, src_n, src_rate);
}

PlannedCall plan_norm(ArgumentSource& source) {
    Planner p(source, "ComplexNorm");
    const int n = p.integer("src_n");
    const float power = p.real("power");
    p.require(n > 0 && !(power <= 0.0F));
    p.buffer(n);
    p.buffer(2.0 * n);
    return p.finish(50.0 * n, 0.0, sorvoAudioComplexNorm, b0, b1, n, power);
}

PlannedCall plan_magphase(ArgumentSource& source) {
    Planner p(source, "MagPhase");
    const int freq_n = p.integer("freq_n");
    const int frame_n = p.integer("frame_n");
    const int form = p.option("phase_form", 0, 1);
    const float power = p.real("power");
    p.require(freq_n >= 1 && frame_n >= 1 && !(power < 0.0F));
    const double size = static_cast<double>(freq_n) * frame_n;
    p.buffer(size);
    p.buffer(form == 0 ? size : 2.0 * size);
    p.buffer(2.0 * size);
    return p.finish(150.0 * size, 0.0, sorvoAudioMagPhase, b0, b1, b2, freq_n, frame_n, form,
                    power);
}

PlannedCall plan_elementwise(ArgumentSource& source, int which) {
    Planner p(source, which == 0 ? "ConvertPowerToDB" : which == 1 ? "Log1p" : "Standardize");
    const int n = p.integer("src_n");
    const float top_db = which == 0 ? p.real("top_db") : 0.0F;
    p.require(n > 0);
    p.buffer(n);
    p.buffer(n);
    if (which == 0) {
        return p.finish(50.0 * n, 0.0, sorvoAudioConvertPowerToDB, b0, b1, n, top_db);
    }
    return p.finish(50.0 * n, 0.0, which == 1 ? sorvoAudioLog1p : sorvoAudioStandardize, b0, b1, n);
}

PlannedCall plan_nonsilent(ArgumentSource& source) {
    Planner p(source, "GetNonSilentPos");
    const int sample_n = p.integer("sample_n");
    const int win_n = p.integer("win_n");
    const int hop_n = p.integer("hop_n");
    const float thr_db = p.real("thr_db");
    p.require(sample_n > 0 && win_n > 0 && hop_n >= 0 && !(thr_db < 0.0F));
    p.buffer(1);
    p.buffer(1);
    p.buffer(sample_n);
    const double frame_n = frames(sample_n, hop_n, 4e9);
    return p.finish(sample_n < win_n ? 0.0 : frame_n * (2.0 * win_n + 50.0),
                    4.0 * win_n + 8.0 * frame_n, sorvoAudioGetNonSilentPos, b0, b1, b2, sample_n,
                    win_n, hop_n, thr_db);
}

PlannedCall plan_fix_frame_len(ArgumentSource& source) {
    Planner p(source, "FixFrameLen");
    const int freq_n = p.integer("freq_n");
    const int dst_frame_n = p.integer("dst_frame_n");
    const int src_frame_n = p.integer("src_frame_n");
    const float pad_value = p.real("pad_value");
    p.require(freq_n > 0 && dst_frame_n >= 1 && src_frame_n >= 1);
    p.buffer(static_cast<double>(freq_n) * dst_frame_n);
    p.buffer(static_cast<double>(freq_n) * src_frame_n);
    return p.finish(static_cast<double>(freq_n) * dst_frame_n, 0.0, sorvoAudioFixFrameLen, b0, b1,
                    freq_n, dst_frame_n, src_frame_n, pad_value);
}

}  // namespace

PlannedCall plan_call(ArgumentSource& source) {
    const int which = source.choice(export_count);
    if (which < 7) {
        return which < 2   ? plan_transform(source, which == 1)
               : which < 4 ? plan_spectrogram(source, which == 3)
                           : plan_elementwise(source, which - 4);
    }
    constexpr PlannedCall (*others[])(ArgumentSource&) = {
        plan_window,       plan_frame_len, plan_inverse,  plan_sample_len, plan_bank,
        plan_to_mel,       plan_filter,    plan_zi,       plan_filtfilt,   plan_resample,
        plan_resample_len, plan_norm,      plan_magphase, plan_nonsilent,  plan_fix_frame_len};
    return others[which - 7](source);
}

}  // namespace sorvo::audio::test
