#include <algorithm>
#include <memory>

#include "analysis_peers.h"
#include "elementwise_peers.h"
#include "mel/mfb_table.h"
#include "plain.h"
#include "rows.h"
#include "signals.h"
#include "sorvo_audio.h"
#include "synthesis_peers.h"

namespace sorvo::bench {
namespace {

constexpr double seconds = 30.0;

constexpr int hann = SORVO_AUDIO_WINDOW_HANN;
constexpr int reflect = SORVO_AUDIO_CENTER_REFLECT;

std::string size_name(const FrameParam& param) {
    return std::to_string(param.fft_n) + "-" + std::to_string(param.hop_n);
}

int center_of(const FrameParam& param) {
    return param.centred ? reflect : SORVO_AUDIO_CENTER_NONE;
}

int count_frames(int sample_n, const FrameParam& param) {
    int frame_n = 0;
    sorvoAudioGetFrameLen(&frame_n, sample_n, param.fft_n, param.hop_n, center_of(param));
    return frame_n;
}

std::size_t output_size(const FrameParam& param, int frame_n) {
    const int row_n = param.mel_n > 0 ? param.mel_n : 2 * (param.fft_n / 2 + 1);
    return static_cast<std::size_t>(row_n) * static_cast<std::size_t>(frame_n);
}

/// Spectrogram or mel spectrogram by the library.
void analyse(float* dst, const float* src, int sample_n, int frame_n, const FrameParam& param) {
    const int center = center_of(param);
    if (param.mel_n > 0) {
        sorvoAudioGetMelSpectrogram(dst, src, sample_n, param.sample_rate, param.fft_n, param.hop_n,
                                    param.fft_n, hann, frame_n, center, param.power,
                                    SORVO_AUDIO_NORM_NONE, 0.0F,
                                    static_cast<float>(param.sample_rate) / 2.0F, param.mel_n,
                                    SORVO_AUDIO_MEL_NORM_AREA, SORVO_AUDIO_MEL_SLANEY);
    } else {
        sorvoAudioGetSpectrogram(dst, src, sample_n, param.fft_n, param.hop_n, param.fft_n, hann,
                                 frame_n, center, param.power, SORVO_AUDIO_NORM_NONE);
    }
}

std::vector<MelBand> sparse_bank(const FrameParam& param) {
    const std::size_t freq_n = static_cast<std::size_t>(param.fft_n) / 2 + 1;
    const auto band_n = static_cast<std::size_t>(param.mel_n);
    std::vector<float> bank(freq_n * band_n);
    sorvoAudioGetFBMatrix(bank.data(), static_cast<int>(freq_n), 0.0F,
                          static_cast<float>(param.sample_rate) / 2.0F, param.mel_n,
                          param.sample_rate, SORVO_AUDIO_MEL_NORM_AREA, SORVO_AUDIO_MEL_SLANEY);
    std::vector<MelBand> bands(band_n);
    for (std::size_t m = 0; m < band_n; ++m) {
        const float* const row = bank.data() + m * freq_n;
        const auto used = [](float weight) { return weight != 0.0F; };
        std::size_t first = static_cast<std::size_t>(std::find_if(row, row + freq_n, used) - row);
        std::size_t end = freq_n;
        while (end > first && row[end - 1] == 0.0F) --end;
        bands[m] = {first < freq_n ? first : 0, {row + first, row + end}};
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

    const auto plain = param.mel_n > 0 ? plain_mel : plain_spectrogram;
    Row row{output_size(param, frame_n), 2e-6, {}};
    row.variants.push_back(
        {"ours", [=](float* dst) { analyse(dst, src->data(), sample_n, frame_n, param); }});
    row.variants.push_back(
        {"plain", [=](float* dst) { plain(dst, src->data(), sample_n, frame_n, param); }});
    for (const auto& peer : analysis_peers(task)) {
        row.variants.push_back({peer->name(), [=](float* dst) { peer->run(dst, src->data()); }});
    }
    return row;
}

/// Mel bands in decibels: what each variant of the mel row makes, converted in place.
Row log_mel_row(const FrameParam& param) {
    constexpr float top_db = 80.0F;
    Row row = analysis_row(param);
    row.tolerance =
        1e-5;  // what differs in the last places differs in decibels of small numbers too
    const int n = static_cast<int>(row.output_n);
    const auto convert = elementwise_peers().back().decibels;
    for (Variant& variant : row.variants) {
        const auto make_bands = variant.run;
        if (variant.name == "ours") {
            variant.run = [=](float* dst) {
                make_bands(dst);
                sorvoAudioConvertPowerToDB(dst, dst, n, top_db);
            };
        } else if (variant.name == "plain") {
            variant.run = [=](float* dst) {
                make_bands(dst);
                plain_decibels(dst, dst, n);
            };
        } else {
            variant.run = [=](float* dst) {
                make_bands(dst);
                convert(dst, dst, n, top_db);
            };
        }
    }
    return row;
}

Row inverse_row(const FrameParam& param) {
    const std::vector<float> signal = make_signal(param.sample_rate, seconds);
    const int frame_n = count_frames(static_cast<int>(signal.size()), param);
    const int freq_n = param.fft_n / 2 + 1;
    int sample_n = 0;
    sorvoAudioGetSampleLen(&sample_n, frame_n, freq_n, param.hop_n, reflect);
    const auto src = std::make_shared<std::vector<float>>(output_size(param, frame_n));
    analyse(src->data(), signal.data(), static_cast<int>(signal.size()), frame_n, param);

    Row row{static_cast<std::size_t>(sample_n), 2e-6, {}};
    row.variants.push_back({"ours", [=](float* dst) {
                                sorvoAudioGetInverseSpectrogram(
                                    dst, src->data(), frame_n, freq_n, param.hop_n, param.fft_n,
                                    hann, sample_n, reflect, SORVO_AUDIO_NORM_NONE);
                            }});
    row.variants.push_back(
        {"plain", [=](float* dst) { plain_inverse(dst, src->data(), frame_n, sample_n, param); }});
    for (const auto& peer : synthesis_peers({frame_n, param.fft_n, param.hop_n, sample_n})) {
        row.variants.push_back({peer->name(), [=](float* dst) { peer->run(dst, src->data()); }});
    }
    return row;
}

/// One frame of 25 ms in one call.
Row single_frame_row(FrameParam param) {
    param.centred = false;
    const auto src =
        std::make_shared<const std::vector<float>>(make_signal(param.sample_rate, 0.025));
    const int sample_n = static_cast<int>(src->size());
    const auto plain = param.mel_n > 0 ? plain_mel : plain_spectrogram;
    Row row{output_size(param, 1), 2e-6, {}};
    row.variants.push_back(
        {"ours", [=](float* dst) { analyse(dst, src->data(), sample_n, 1, param); }});
    row.variants.push_back(
        {"plain", [=](float* dst) { plain(dst, src->data(), sample_n, 1, param); }});
    return row;
}

constexpr FrameParam spectrogram_params[] = {
    {16000, 400, 160, 0.0F, 0, true},
    {16000, 512, 160, 0.0F, 0, true},
    {22050, 1024, 256, 0.0F, 0, true},
    {22050, 2048, 512, 0.0F, 0, true},
};

constexpr FrameParam mel_params[] = {
    {16000, 400, 160, 2.0F, 80, true},
    {22050, 1024, 256, 1.0F, 80, true},
    {22050, 2048, 512, 2.0F, 128, true},
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

Rows single_frame_rows() {
    FrameParam spectrogram = spectrogram_params[0];
    spectrogram.power = 2.0F;
    return {{"frame/spectrogram-400", [=] { return single_frame_row(spectrogram); }},
            {"frame/mel-400-80", [] { return single_frame_row(mel_params[0]); }}};
}

}  // namespace sorvo::bench
