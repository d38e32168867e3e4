#include <algorithm>
#include <iterator>
#include <memory>

#include "analysis_peers.h"
#include "elementwise/decibel.h"
#include "elementwise_peers.h"
#include "mel/mel_spectrogram.h"
#include "mel/mfb_table.h"
#include "rows.h"
#include "signals.h"
#include "sorvo_audio.h"
#include "stft/inverse_spectrogram.h"
#include "stft/spectrogram.h"
#include "synthesis_peers.h"

namespace sorvo::bench {
namespace {

constexpr double seconds = 30.0;

constexpr int hann = SORVO_AUDIO_WINDOW_HANN;
constexpr int reflect = SORVO_AUDIO_CENTER_REFLECT;

/// Parameters of short-time analysis with a Hann window of fft_n samples and reflected ends.
struct FrameParam {
    int sample_rate;
    int fft_n;
    int hop_n;
    float power;
    int mel_n;  ///< 0: spectrogram only
};

std::string size_name(const FrameParam& param) {
    return std::to_string(param.fft_n) + "-" + std::to_string(param.hop_n);
}

audio::Analysis analysis_of(const FrameParam& param) {
    return {param.fft_n, param.hop_n, param.fft_n,          hann,
            reflect,     param.power, SORVO_AUDIO_NORM_NONE};
}

audio::MelFilterBankParam bank_of(const FrameParam& param) {
    return {param.fft_n / 2 + 1,
            0.0F,
            static_cast<float>(param.sample_rate) / 2.0F,
            param.mel_n,
            param.sample_rate,
            SORVO_AUDIO_MEL_NORM_AREA,
            false};
}

int count_frames(int sample_n, const FrameParam& param) {
    const audio::Analysis analysis = analysis_of(param);
    return audio::get_frame_len(sample_n, analysis.fft_n, analysis.hop_n, analysis.center);
}

std::size_t output_size(const FrameParam& param, int frame_n) {
    const int row_n = param.mel_n > 0 ? param.mel_n : 2 * (param.fft_n / 2 + 1);
    return static_cast<std::size_t>(row_n) * static_cast<std::size_t>(frame_n);
}

/// Spectrogram or mel spectrogram by the library.
void analyse(float* dst, const audio::Signal& signal, int frame_n, const FrameParam& param,
             audio::SimdLevel level) {
    if (param.mel_n > 0) {
        audio::mel_spectrogram(dst, signal, analysis_of(param), bank_of(param), frame_n, level);
    } else {
        audio::spectrogram(dst, signal, analysis_of(param), frame_n, level);
    }
}

/// The same by its definition.
void analyse_plainly(float* dst, const audio::Signal& signal, int frame_n,
                     const FrameParam& param) {
    if (param.mel_n > 0) {
        audio::mel_spectrogram_plain(dst, signal, analysis_of(param), bank_of(param), frame_n);
    } else {
        audio::spectrogram_plain(dst, signal, analysis_of(param), frame_n);
    }
}

std::vector<MelBand> sparse_bank(const FrameParam& param) {
    std::vector<MelBand> bands;
    for (const std::vector<float>& row : audio::MFBTable::instance().ref_table(bank_of(param))) {
        const auto used = [](float weight) { return weight != 0.0F; };
        const auto first = std::find_if(row.begin(), row.end(), used);
        const auto end = std::find_if(row.rbegin(), std::make_reverse_iterator(first), used).base();
        const auto begin_n = static_cast<std::size_t>(first - row.begin());
        bands.push_back({first == row.end() ? 0 : begin_n, {first, end}});
    }
    return bands;
}

Row analysis_row(const FrameParam& param) {
    const auto src =
        std::make_shared<const std::vector<float>>(make_signal(param.sample_rate, seconds));
    const int sample_n = static_cast<int>(src->size());
    const int frame_n = count_frames(sample_n, param);
    AnalysisTask task{sample_n, frame_n, param.fft_n, param.hop_n, Magnitude::complex, {}};
    if (param.power > 0.0F) {
        task.magnitude = param.power > 1.0F ? Magnitude::power : Magnitude::magnitude;
    }
    if (param.mel_n > 0) task.bands = sparse_bank(param);

    Row row{output_size(param, frame_n), 2e-6, {}, {}};
    row.ours = [=](float* dst, audio::SimdLevel level) {
        analyse(dst, {src->data(), sample_n}, frame_n, param, level);
    };
    row.others.push_back({"plain", [=](float* dst) {
                              analyse_plainly(dst, {src->data(), sample_n}, frame_n, param);
                          }});
    for (const auto& peer : analysis_peers(task)) {
        row.others.push_back({peer->name(), [=](float* dst) { peer->run(dst, src->data()); }});
    }
    return row;
}

/// Mel bands in decibels: what each variant of the mel row makes, converted in place.
Row log_mel_row(const FrameParam& param) {
    constexpr float top_db = 80.0F;
    Row row = analysis_row(param);
    // What differs in the last places differs in decibels of small numbers too.
    row.tolerance = 1e-5;
    const int n = static_cast<int>(row.output_n);
    row.ours = [=, make_bands = row.ours](float* dst, audio::SimdLevel level) {
        make_bands(dst, level);
        audio::convert_power_to_db(dst, dst, n, top_db, level);
    };
    const auto convert = elementwise_peers().back().decibels;
    for (Variant& variant : row.others) {
        const bool plain = variant.name == "plain";
        variant.run = [=, make_bands = variant.run](float* dst) {
            make_bands(dst);
            if (plain) {
                decibels_plainly(dst, dst, n);
            } else {
                convert(dst, dst, n, top_db);
            }
        };
    }
    return row;
}

Row inverse_row(const FrameParam& param) {
    const std::vector<float> signal = make_signal(param.sample_rate, seconds);
    const int frame_n = count_frames(static_cast<int>(signal.size()), param);
    const int freq_n = param.fft_n / 2 + 1;
    const int sample_n = audio::get_sample_len(frame_n, freq_n, param.hop_n, true);
    const auto src = std::make_shared<std::vector<float>>(output_size(param, frame_n));
    analyse(src->data(), {signal.data(), static_cast<int>(signal.size())}, frame_n, param,
            audio::simd_level());
    const auto synthesis = [=] {
        return audio::Synthesis{src->data(), frame_n, freq_n,  param.hop_n,
                                param.fft_n, hann,    reflect, SORVO_AUDIO_NORM_NONE};
    };

    Row row{static_cast<std::size_t>(sample_n), 2e-6, {}, {}};
    row.ours = [=](float* dst, audio::SimdLevel level) {
        audio::inverse_spectrogram(dst, sample_n, synthesis(), level);
    };
    row.others.push_back({"plain", [=](float* dst) {
                              audio::inverse_spectrogram_plain(dst, sample_n, synthesis());
                          }});
    for (const auto& peer : synthesis_peers({frame_n, param.fft_n, param.hop_n, sample_n})) {
        row.others.push_back({peer->name(), [=](float* dst) { peer->run(dst, src->data()); }});
    }
    return row;
}

constexpr FrameParam spectrogram_params[] = {
    {16000, 400, 160, 0.0F, 0},
    {16000, 512, 160, 0.0F, 0},
    {22050, 1024, 256, 0.0F, 0},
    {22050, 2048, 512, 0.0F, 0},
};

constexpr FrameParam mel_params[] = {
    {16000, 400, 160, 2.0F, 80},
    {22050, 1024, 256, 1.0F, 80},
    {22050, 2048, 512, 2.0F, 128},
};

}  // namespace

Rows spectrogram_rows() {
    Rows rows;
    for (FrameParam param : spectrogram_params) {
        for (const auto& [name, power] :
             {std::pair{"power", 2.0F}, std::pair{"magnitude", 1.0F}, std::pair{"complex", 0.0F}}) {
            param.power = power;
            rows.push_back({"spectrogram/" + size_name(param) + "-" + name,
                            [param] { return analysis_row(param); }});
        }
    }
    return rows;
}

Rows mel_rows() {
    Rows rows;
    for (const FrameParam& param : mel_params) {
        rows.push_back({"mel/" + size_name(param) + "-" + std::to_string(param.mel_n),
                        [param] { return analysis_row(param); }});
    }
    return rows;
}

Rows log_mel_rows() {
    Rows rows;
    for (const FrameParam& param : mel_params) {
        rows.push_back({"log-mel/" + size_name(param) + "-" + std::to_string(param.mel_n),
                        [param] { return log_mel_row(param); }});
    }
    return rows;
}

Rows inverse_rows() {
    Rows rows;
    for (const FrameParam& param : {spectrogram_params[0], spectrogram_params[2]}) {
        rows.push_back({"inverse/" + size_name(param), [param] { return inverse_row(param); }});
    }
    return rows;
}

}  // namespace sorvo::bench
