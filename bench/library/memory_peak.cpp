// Peak working memory of the frame pipelines for an hour of sound, beyond the caller's buffers and
// the tables: how far the process's resident memory rises above what it was before the call.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "signals.h"
#include "sorvo_audio.h"

namespace {

using namespace sorvo::bench;

constexpr int sample_rate = 16000;
constexpr int fft_n = 400;
constexpr int hop_n = 160;
constexpr int freq_n = fft_n / 2 + 1;
constexpr int mel_n = 80;

using Task = void (*)(float* dst, const float* src, int sample_n, int frame_n);

void spectrogram(float* dst, const float* src, int sample_n, int frame_n) {
    sorvoAudioGetSpectrogram(dst, src, sample_n, fft_n, hop_n, fft_n, SORVO_AUDIO_WINDOW_HANN,
                             frame_n, SORVO_AUDIO_CENTER_REFLECT, 2.0F, SORVO_AUDIO_NORM_NONE);
}

void mel(float* dst, const float* src, int sample_n, int frame_n) {
    sorvoAudioGetMelSpectrogram(dst, src, sample_n, sample_rate, fft_n, hop_n, fft_n,
                                SORVO_AUDIO_WINDOW_HANN, frame_n, SORVO_AUDIO_CENTER_REFLECT, 2.0F,
                                SORVO_AUDIO_NORM_NONE, 0.0F, 8000.0F, mel_n,
                                SORVO_AUDIO_MEL_NORM_AREA, SORVO_AUDIO_MEL_SLANEY);
}

/// In KiB: "VmRSS:" what is resident, "VmHWM:" the most that ever was.
long resident(const std::string& key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind(key, 0) == 0) return std::stol(line.substr(key.size()));
    }
    return 0;
}

int count_frames(int sample_n) {
    int frame_n = 0;
    sorvoAudioGetFrameLen(&frame_n, sample_n, fft_n, hop_n, SORVO_AUDIO_CENTER_REFLECT);
    return frame_n;
}

void report(const char* name, Task task, const std::vector<float>& src, std::size_t row_n,
            const char* end) {
    const int second_n = sample_rate;
    const int sample_n = static_cast<int>(src.size());
    std::vector<float> dst(row_n * static_cast<std::size_t>(count_frames(sample_n)));
    std::fill(dst.begin(), dst.end(), 1.0F);
    task(dst.data(), src.data(), second_n, count_frames(second_n));  // builds the tables
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts again from here
    const long before = resident("VmRSS:");
    task(dst.data(), src.data(), sample_n, count_frames(sample_n));
    std::printf("  {\"name\": \"%s\", \"peak_kib\": %ld}%s\n", name, resident("VmHWM:") - before,
                end);
}

}  // namespace

int main() {
    const std::vector<float> src = make_signal(sample_rate, 3600.0);
    std::printf("{\"memory\": [\n");
    report("spectrogram", spectrogram, src, 2 * freq_n, ",");
    report("mel", mel, src, mel_n, "");
    std::printf("]}\n");
}
