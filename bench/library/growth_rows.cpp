// The same tasks on one second, half a minute and ten minutes of sound.
#include <memory>

#include "rows.h"
#include "signals.h"
#include "sorvo_audio.h"

namespace sorvo::bench {
namespace {

constexpr int sample_rate = 16000;
constexpr int resampled_rate = 44100;
constexpr int lengths[] = {1, 30, 600};  // seconds
constexpr int fft_n = 400;
constexpr int hop_n = 160;
constexpr int freq_n = fft_n / 2 + 1;
constexpr int mel_n = 80;
constexpr int hann = SORVO_AUDIO_WINDOW_HANN;
constexpr int reflect = SORVO_AUDIO_CENTER_REFLECT;

using Task = void (*)(float* dst, const float* src, int sample_n);

int count_frames(int sample_n) {
    int frame_n = 0;
    sorvoAudioGetFrameLen(&frame_n, sample_n, fft_n, hop_n, reflect);
    return frame_n;
}

void spectrogram(float* dst, const float* src, int sample_n) {
    sorvoAudioGetSpectrogram(dst, src, sample_n, fft_n, hop_n, fft_n, hann, count_frames(sample_n),
                             reflect, 2.0F, SORVO_AUDIO_NORM_NONE);
}

void mel(float* dst, const float* src, int sample_n) {
    sorvoAudioGetMelSpectrogram(dst, src, sample_n, sample_rate, fft_n, hop_n, fft_n, hann,
                                count_frames(sample_n), reflect, 2.0F, SORVO_AUDIO_NORM_NONE, 0.0F,
                                8000.0F, mel_n, SORVO_AUDIO_MEL_NORM_AREA, SORVO_AUDIO_MEL_SLANEY);
}

/// Samples serve as the spectrogram.
void inverse(float* dst, const float* src, int sample_n) {
    sorvoAudioGetInverseSpectrogram(dst, src, count_frames(sample_n), freq_n, hop_n, fft_n, hann,
                                    sample_n, reflect, SORVO_AUDIO_NORM_NONE);
}

void resample(float* dst, const float* src, int sample_n) {
    int dst_n = 0;
    sorvoAudioGetResampleLen(&dst_n, sample_rate, sample_n, resampled_rate);
    sorvoAudioResample(dst, src, sample_rate, dst_n, resampled_rate, sample_n);
}

void filter(float* dst, const float* src, int sample_n) {
    static const Filter coef = order2_filter();
    sorvoAudioLinerFilter(dst, src, coef.b.data(), coef.a.data(), nullptr, sample_n, sample_n, 3, 3,
                          0);
}

void filtfilt(float* dst, const float* src, int sample_n) {
    static const Filter coef = order2_filter();
    sorvoAudioFilterFilter(dst, src, coef.b.data(), coef.a.data(), sample_n, sample_n, 3, 3,
                           SORVO_AUDIO_PAD_ODD, 9);
}

struct GrowthTask {
    const char* name;
    Task run;
    int src_rate;
};

constexpr GrowthTask tasks[] = {
    {"spectrogram", spectrogram, sample_rate}, {"mel", mel, sample_rate},
    {"inverse", inverse, sample_rate},         {"resample", resample, resampled_rate},
    {"filter", filter, sample_rate},           {"filtfilt", filtfilt, sample_rate}};

Row growth_row(const GrowthTask& task) {
    // A spectrogram has 2 freq_n / hop_n = 2.5 values for each sample.
    constexpr double longest = 600.0;
    static_assert(resampled_rate <= 3 * sample_rate);
    const auto src =
        std::make_shared<const std::vector<float>>(make_signal(sample_rate, 3.0 * longest));
    Row row{src->size(), 0.0, {}, {}};
    for (const int length : lengths) {
        row.others.push_back({std::to_string(length) + "s", [=](float* dst) {
                                  task.run(dst, src->data(), length * task.src_rate);
                              }});
    }
    return row;
}

}  // namespace

Rows growth_rows() {
    Rows rows;
    for (const GrowthTask& task : tasks) {
        rows.push_back({std::string("growth/") + task.name, [&] { return growth_row(task); }});
    }
    return rows;
}

}  // namespace sorvo::bench
