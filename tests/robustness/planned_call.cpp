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

using Buffers = std::vector<void*>;

/// Draws arguments, keeps their text, and collects what the header says.
class Planner {
  public:
    Planner(ArgumentSource& source, const char* name) : source_(source) { text_ << name << '('; }

    int integer(const char* name) { return show(name, source_.integer()); }
    /// Mostly one of the accepted values 0 ... n - 1, or anything.
    int option(const char* name, int n) {
        return show(name, source_.choice(8) == 0 ? source_.integer() : source_.choice(n));
    }
    float real(const char* name) { return show(name, source_.real()); }

    void require(bool condition) { call_.valid = call_.valid && condition; }
    void require_option(int value, int first, int last) {
        require(value >= first && value <= last);
    }

    /// An array argument; once in a while it is null, which only an optional one may be.
    void buffer(double element_n, bool optional = false) {
        const bool null = source_.choice(24) == 0;
        require(!null || optional);
        nulls_.push_back(null);
        call_.buffer_bytes.push_back(null ? 0.0 : 4.0 * std::max(element_n, 0.0));
    }

    template <class Function>
    PlannedCall finish(Function function, double work, double storage) {
        for (const bool null : nulls_) {
            text_ << (null ? " null" : " buffer");
        }
        call_.text = text_.str() + " )";
        call_.work = work;
        call_.storage = storage;
        call_.invoke = [function, nulls = nulls_](const Buffers& buffers) {
            Buffers arguments = buffers;
            for (std::size_t i = 0; i < nulls.size(); ++i) {
                arguments[i] = nulls[i] ? nullptr : arguments[i];
            }
            return function(arguments);
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

float* floats(void* buffer) {
    return static_cast<float*>(buffer);
}
int* ints(void* buffer) {
    return static_cast<int*>(buffer);
}

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
    return p.finish([=](const Buffers& b) { return function(floats(b[0]), floats(b[1]), n); },
                    transform_work(n), 32.0 * n);
}

PlannedCall plan_window(ArgumentSource& source) {
    Planner p(source, "GetWindow");
    const int n = p.integer("window_n");
    const int type = p.option("win_type", 3);
    p.require(n >= 1);
    p.require_option(type, 1, 2);
    p.buffer(n);
    return p.finish([=](const Buffers& b) { return sorvoAudioGetWindow(floats(b[0]), n, type); },
                    20.0 * n, 8.0 * n);
}

PlannedCall plan_frame_len(ArgumentSource& source) {
    Planner p(source, "GetFrameLen");
    const int sample_n = p.integer("sample_n");
    const int fft_n = p.integer("fft_n");
    const int hop_n = p.integer("hop_n");
    const int center = p.option("center", 3);
    p.require(sample_n > 0 && fft_n > 0 && hop_n >= 0);
    p.require_option(center, 0, 2);
    p.buffer(1);
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioGetFrameLen(ints(b[0]), sample_n, fft_n, hop_n, center);
        },
        1.0, 0.0);
}

PlannedCall plan_spectrogram(ArgumentSource& source, bool mel) {
    Planner p(source, mel ? "GetMelSpectrogram" : "GetSpectrogram");
    const int sample_n = p.integer("sample_n");
    const int fft_n = p.integer("fft_n");
    const int hop_n = p.integer("hop_n");
    const int win_n = p.integer("win_n");
    const int win_type = p.option("win_type", 3);
    const int max_frame_n = p.integer("max_frame_n");
    const int center = p.option("center", 3);
    const float power = p.real("power");
    const int norm_type = p.option("norm_type", 3);
    p.require(sample_n > 0 && fft_n > 0 && hop_n >= 0 && win_n > 0 && max_frame_n > 0);
    p.require_option(win_type, 1, 2);
    p.require_option(center, 0, 2);
    p.require_option(norm_type, 0, 2);
    p.require(!(power < 0.0F));
    const double freq_n = fft_n / 2 + 1;
    const double frame_work = transform_work(fft_n) + 100.0 * freq_n;
    const double work = frames(sample_n, hop_n, max_frame_n) * frame_work + 20.0 * win_n;
    const double storage = 64.0 * fft_n + 8.0 * win_n;
    if (!mel) {
        p.buffer(freq_n * max_frame_n * 2.0);
        p.buffer(sample_n);
        return p.finish(
            [=](const Buffers& b) {
                return sorvoAudioGetSpectrogram(floats(b[0]), floats(b[1]), sample_n, fft_n, hop_n,
                                                win_n, win_type, max_frame_n, center, power,
                                                norm_type);
            },
            work, storage);
    }
    const int sample_rate = p.integer("sample_rate");
    const float f_min = p.real("f_min");
    const float f_max = p.real("f_max");
    const int mel_n = p.integer("mel_n");
    const int mel_norm = p.option("mel_norm", 2);
    const int mel_formula = p.option("mel_formula", 2);
    p.require(sample_rate >= 1 && mel_n >= 1 && fft_n / 2 >= mel_n);
    p.require(!(f_min < 0.0F) && !(f_max < 0.0F) && !(f_min >= f_max));
    p.require_option(mel_norm, 0, 1);
    p.require_option(mel_formula, 0, 1);
    p.buffer(static_cast<double>(mel_n) * max_frame_n);
    p.buffer(sample_n);
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioGetMelSpectrogram(
                floats(b[0]), floats(b[1]), sample_n, sample_rate, fft_n, hop_n, win_n, win_type,
                max_frame_n, center, power, norm_type, f_min, f_max, mel_n, mel_norm, mel_formula);
        },
        work + (frames(sample_n, hop_n, max_frame_n) + 10.0) * freq_n * mel_n,
        storage + 4.0 * freq_n * mel_n);
}

PlannedCall plan_inverse(ArgumentSource& source) {
    Planner p(source, "GetInverseSpectrogram");
    const int frame_n = p.integer("frame_n");
    const int freq_n = p.integer("freq_n");
    const int hop_n = p.integer("hop_n");
    const int win_n = p.integer("win_n");
    const int win_type = p.option("win_type", 3);
    const int max_sample_n = p.integer("max_sample_n");
    const int center = p.option("center", 3);
    const int norm_type = p.option("norm_type", 3);
    p.require(frame_n > 0 && freq_n > 1 && hop_n >= 0 && win_n > 0 && max_sample_n > 0);
    p.require_option(win_type, 1, 2);
    p.require_option(center, 0, 2);
    p.require_option(norm_type, 0, 2);
    p.buffer(max_sample_n);
    p.buffer(2.0 * frame_n * freq_n);
    const double fft_n = 2.0 * freq_n - 2.0;
    const double length = static_cast<double>(frame_n) * hop_n + fft_n;
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioGetInverseSpectrogram(floats(b[0]), floats(b[1]), frame_n, freq_n,
                                                   hop_n, win_n, win_type, max_sample_n, center,
                                                   norm_type);
        },
        frame_n * transform_work(std::abs(fft_n) < 2e9 ? static_cast<int>(fft_n) : 1) +
            20.0 * win_n + length,
        64.0 * fft_n + 16.0 * length + 12.0 * win_n);
}

PlannedCall plan_sample_len(ArgumentSource& source) {
    Planner p(source, "GetSampleLen");
    const int frame_n = p.integer("frame_n");
    const int freq_n = p.integer("freq_n");
    const int hop_n = p.integer("hop_n");
    const int center = p.option("center", 3);
    p.require(frame_n > 0 && freq_n > 0 && hop_n >= 0);
    p.require_option(center, 0, 2);
    p.buffer(1);
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioGetSampleLen(ints(b[0]), frame_n, freq_n, hop_n, center);
        },
        1.0, 0.0);
}

PlannedCall plan_bank(ArgumentSource& source) {
    Planner p(source, "GetFBMatrix");
    const int freq_n = p.integer("freq_n");
    const float f_min = p.real("f_min");
    const float f_max = p.real("f_max");
    const int mel_n = p.integer("mel_n");
    const int sample_rate = p.integer("sample_rate");
    const int mel_norm = p.option("mel_norm", 2);
    const int mel_formula = p.option("mel_formula", 2);
    p.require(freq_n >= 1 && mel_n >= 1 && freq_n > mel_n && sample_rate >= 1);
    p.require(!(f_min < 0.0F) && !(f_max < 0.0F) && !(f_min >= f_max));
    p.require_option(mel_norm, 0, 1);
    p.require_option(mel_formula, 0, 1);
    const double size = static_cast<double>(freq_n) * mel_n;
    p.buffer(size);
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioGetFBMatrix(floats(b[0]), freq_n, f_min, f_max, mel_n, sample_rate,
                                         mel_norm, mel_formula);
        },
        10.0 * size, 6.0 * size + 64.0 * mel_n);
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
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioConvertToMel(floats(b[0]), floats(b[1]), floats(b[2]), freq_n, frame_n,
                                          mel_n);
        },
        2.0 * mel_n * freq_n * frame_n, 8.0 * mel_n);
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
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioLinerFilter(floats(b[0]), floats(b[1]), floats(b[2]), floats(b[3]),
                                         floats(b[4]), dst_n, src_n, n_coef_n, d_coef_n, zi_n);
        },
        order * (std::min(dst_n, src_n) + 10.0), 24.0 * order);
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
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioGetLinerFilterZiCoef(floats(b[0]), floats(b[1]), floats(b[2]), dst_n,
                                                  n_coef_n, d_coef_n);
        },
        10.0 * order + dst_n, 24.0 * order);
}

PlannedCall plan_filtfilt(ArgumentSource& source) {
    Planner p(source, "FilterFilter");
    const int dst_n = p.integer("dst_n");
    const int src_n = p.integer("src_n");
    const int n_coef_n = p.integer("n_coef_n");
    const int d_coef_n = p.integer("d_coef_n");
    const int pad_type = p.option("pad_type", 4);
    const int pad_len = p.integer("pad_len");
    p.require(dst_n > 0 && src_n > 0 && n_coef_n > 0 && d_coef_n > 0 && pad_len >= 0);
    p.require_option(pad_type, 0, 3);
    p.require((pad_type != 1 && pad_type != 2) || pad_len == 0 || pad_len < src_n);
    p.buffer(dst_n);
    p.buffer(src_n);
    p.buffer(n_coef_n);
    p.buffer(d_coef_n);
    const double order = std::max(n_coef_n, d_coef_n);
    const double length = src_n + 2.0 * (pad_type == 0 ? 0.0 : pad_len);
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioFilterFilter(floats(b[0]), floats(b[1]), floats(b[2]), floats(b[3]),
                                          dst_n, src_n, n_coef_n, d_coef_n, pad_type, pad_len);
        },
        3.0 * order * (length + 10.0), 48.0 * order + 12.0 * length);
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
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioResample(floats(b[0]), floats(b[1]), dst_rate, dst_n, src_rate, src_n);
        },
        5000.0 * std::min(up, 1e6) + 100.0 * dst_n + src_n, 700.0 * up + 8.0 * src_n);
}

PlannedCall plan_resample_len(ArgumentSource& source) {
    Planner p(source, "GetResampleLen");
    const int dst_rate = p.integer("dst_sample_rate");
    const int src_n = p.integer("src_sample_n");
    const int src_rate = p.integer("src_sample_rate");
    p.require(dst_rate > 0 && src_n > 0 && src_rate > 0);
    p.buffer(1);
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioGetResampleLen(ints(b[0]), dst_rate, src_n, src_rate);
        },
        1.0, 0.0);
}

PlannedCall plan_norm(ArgumentSource& source) {
    Planner p(source, "ComplexNorm");
    const int n = p.integer("src_n");
    const float power = p.real("power");
    p.require(n > 0 && !(power <= 0.0F));
    p.buffer(n);
    p.buffer(2.0 * n);
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioComplexNorm(floats(b[0]), floats(b[1]), n, power);
        },
        50.0 * n, 0.0);
}

PlannedCall plan_magphase(ArgumentSource& source) {
    Planner p(source, "MagPhase");
    const int freq_n = p.integer("freq_n");
    const int frame_n = p.integer("frame_n");
    const int form = p.option("phase_form", 2);
    const float power = p.real("power");
    p.require(freq_n >= 1 && frame_n >= 1 && !(power < 0.0F));
    p.require_option(form, 0, 1);
    const double size = static_cast<double>(freq_n) * frame_n;
    p.buffer(size);
    p.buffer(form == 0 ? size : 2.0 * size);
    p.buffer(2.0 * size);
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioMagPhase(floats(b[0]), floats(b[1]), floats(b[2]), freq_n, frame_n,
                                      form, power);
        },
        150.0 * size, 0.0);
}

PlannedCall plan_elementwise(ArgumentSource& source, int which) {
    Planner p(source, which == 0 ? "ConvertPowerToDB" : which == 1 ? "Log1p" : "Standardize");
    const int n = p.integer("src_n");
    const float top_db = which == 0 ? p.real("top_db") : 0.0F;
    p.require(n > 0);
    p.buffer(n);
    p.buffer(n);
    return p.finish(
        [=](const Buffers& b) {
            float* const dst = floats(b[0]);
            const float* const src = floats(b[1]);
            return which == 0   ? sorvoAudioConvertPowerToDB(dst, src, n, top_db)
                   : which == 1 ? sorvoAudioLog1p(dst, src, n)
                                : sorvoAudioStandardize(dst, src, n);
        },
        50.0 * n, 0.0);
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
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioGetNonSilentPos(ints(b[0]), ints(b[1]), floats(b[2]), sample_n, win_n,
                                             hop_n, thr_db);
        },
        sample_n < win_n ? 0.0 : frame_n * (2.0 * win_n + 50.0), 4.0 * win_n + 8.0 * frame_n);
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
    return p.finish(
        [=](const Buffers& b) {
            return sorvoAudioFixFrameLen(floats(b[0]), floats(b[1]), freq_n, dst_frame_n,
                                         src_frame_n, pad_value);
        },
        static_cast<double>(freq_n) * dst_frame_n, 0.0);
}

}  // namespace

PlannedCall plan_call(ArgumentSource& source) {
    const int which = source.choice(export_count);
    switch (which) {
        case 0:
        case 1:
            return plan_transform(source, which == 1);
        case 2:
        case 3:
            return plan_spectrogram(source, which == 3);
        case 4:
        case 5:
        case 6:
            return plan_elementwise(source, which - 4);
        case 7:
            return plan_window(source);
        case 8:
            return plan_frame_len(source);
        case 9:
            return plan_inverse(source);
        case 10:
            return plan_sample_len(source);
        case 11:
            return plan_bank(source);
        case 12:
            return plan_to_mel(source);
        case 13:
            return plan_filter(source);
        case 14:
            return plan_zi(source);
        case 15:
            return plan_filtfilt(source);
        case 16:
            return plan_resample(source);
        case 17:
            return plan_resample_len(source);
        case 18:
            return plan_norm(source);
        case 19:
            return plan_magphase(source);
        case 20:
            return plan_nonsilent(source);
        default:
            return plan_fix_frame_len(source);
    }
}

}  // namespace sorvo::audio::test
