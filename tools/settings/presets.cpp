#include "settings/presets.h"

#include <algorithm>

namespace sorvo_tool {
namespace {

// Arguments: n_fft, hop_length, centring, sample rate, reflected samples, power, bands, f_max
// (0: half the rate), mel norm, mel scale.
MelSettings mel(int fft_n, int hop_n, int center, int sample_rate, int pad_n, float power,
                int mel_n, float f_max, int mel_norm, int mel_formula) {
    MelSettings settings;
    settings.frame.fft_n = fft_n;
    settings.frame.hop_n = hop_n;
    settings.frame.center = center;
    settings.sample_rate = sample_rate;
    settings.pad_n = pad_n;
    settings.power = power;
    settings.mel_n = mel_n;
    settings.f_max = f_max;
    settings.mel_norm = mel_norm;
    settings.mel_formula = mel_formula;
    return settings;
}

constexpr int reflect = SORVO_AUDIO_CENTER_REFLECT;
constexpr int zeros = SORVO_AUDIO_CENTER_ZEROS;
constexpr int none = SORVO_AUDIO_CENTER_NONE;
constexpr int area = SORVO_AUDIO_MEL_NORM_AREA;
constexpr int plain = SORVO_AUDIO_MEL_NORM_NONE;
constexpr int slaney = SORVO_AUDIO_MEL_SLANEY;
constexpr int htk = SORVO_AUDIO_MEL_HTK;

const char* const whisper_afterwards =
    "x = np.log10(np.maximum(mel[:, :-1], 1e-10)); x = (np.maximum(x, x.max() - 8) + 4) / 4";
const char* const log_afterwards = "x = np.log(np.maximum(mel, 1e-5))";

}  // namespace

const std::vector<Preset>& all_presets() {
    static const std::vector<Preset> presets{
        {"whisper", "Whisper speech recognition, 80 bands",
         mel(400, 160, reflect, 16000, 0, 2, 80, 8000, area, slaney), whisper_afterwards},
        {"whisper_128", "Whisper large-v3, 128 bands",
         mel(400, 160, reflect, 16000, 0, 2, 128, 8000, area, slaney), whisper_afterwards},
        {"librosa", "librosa.feature.melspectrogram with its defaults",
         mel(2048, 512, zeros, 22050, 0, 2, 128, 0, area, slaney), ""},
        {"torchaudio", "torchaudio.transforms.MelSpectrogram with its defaults",
         mel(400, 200, reflect, 16000, 0, 2, 128, 0, plain, htk), ""},
        {"tacotron2", "Tacotron 2 speech synthesis",
         mel(1024, 256, reflect, 22050, 0, 1, 80, 8000, area, slaney), log_afterwards},
        {"hifigan", "HiFi-GAN vocoder; reflects (n_fft - hop) / 2 samples itself",
         mel(1024, 256, none, 22050, 384, 1, 80, 8000, area, slaney), log_afterwards},
    };
    return presets;
}

std::vector<std::string> preset_names() {
    std::vector<std::string> names;
    for (const Preset& preset : all_presets()) names.push_back(preset.name);
    return names;
}

const Preset& find_preset(const std::string& name) {
    const auto& presets = all_presets();
    return *std::find_if(presets.begin(), presets.end(),
                         [&](const Preset& preset) { return preset.name == name; });
}

}  // namespace sorvo_tool
