#include "explain/code.h"
#include "explain/explanation.h"
#include "settings/presets.h"

namespace sorvo_tool {
namespace {

std::string decibel_code(const MelSettings& mel, const std::string& module) {
    if (!mel.in_db) return "";
    std::string powers = mel.power == 2 ? "mel" : "mel ** " + literal(2 / mel.power);
    return "\n" + call("mel = " + module + ".power_to_db",
                       {powers, "ref=np.max",
                        keyword("top_db", mel.top_db < 0 ? "None" : literal(mel.top_db).c_str())});
}

// What comes before: the sound at the rate and with the ends that the transform takes.
std::string reflected(const MelSettings& mel) {
    return mel.pad_n > 0 ? "y = np.pad(y, " + std::to_string(mel.pad_n) + ", \"reflect\")\n" : "";
}

std::string c_code(const MelSettings& mel, int rate) {
    const FrameSettings& frame = mel.frame;
    const std::string n_fft = std::to_string(frame.fft_n);
    const std::string hop = std::to_string(frame.hop_n);
    const std::string mel_n = std::to_string(mel.mel_n);
    std::string code;
    if (mel.pad_n > 0)
        code += "/* y is reflected by " + std::to_string(mel.pad_n) + " samples at both ends */\n";
    code +=
        call("sorvoAudioGetFrameLen", {"&frame_n", "y_n", n_fft, hop, c_center(frame.center)}) +
        ";\n" +
        call("sorvoAudioGetMelSpectrogram",
             {"mel", "y", "y_n", std::to_string(rate), n_fft, hop, std::to_string(frame.win_n),
              c_window(frame.window), "frame_n", c_center(frame.center), literal(mel.power, true),
              c_norm(frame.norm), literal(mel.f_min, true), literal(upper_hz(mel, rate), true),
              mel_n, c_mel_norm(mel.mel_norm), c_mel_formula(mel.mel_formula)}) +
        ";";
    if (mel.in_db && mel.power != 2)
        code += "\n/* each mel[i] raised to the power " + literal(2 / mel.power) + " */";
    if (mel.in_db)
        code += "\n" +
                call("sorvoAudioConvertPowerToDB",
                     {"mel", "mel", mel_n + " * frame_n", literal(mel.top_db, true)}) +
                ";";
    return code;
}

}  // namespace

Explanation explain(const MelSettings& mel, const std::string& preset, int sample_rate) {
    const FrameSettings& frame = mel.frame;
    const int rate = mel.sample_rate > 0 ? mel.sample_rate : sample_rate;
    const bool is_centred = frame.center != SORVO_AUDIO_CENTER_NONE;
    const bool is_zeros = frame.center == SORVO_AUDIO_CENTER_ZEROS;
    const bool is_htk = mel.mel_formula == SORVO_AUDIO_MEL_HTK;
    const bool is_area = mel.mel_norm == SORVO_AUDIO_MEL_NORM_AREA;
    Explanation result;
    result.push_back({"C", c_code(mel, rate), ""});

    std::vector<std::string> arguments{
        keyword("y", "y"),
        keyword("sr", rate),
        keyword("n_fft", frame.fft_n),
        keyword("hop_length", frame.hop_n),
        keyword("win_length", frame.win_n),
        keyword("window", word_of(window_choices, frame.window)),
        keyword("center", is_centred ? "True" : "False"),
        keyword("pad_mode", std::string(is_zeros ? "constant" : "reflect")),
        keyword("power", mel.power),
        keyword("n_mels", mel.mel_n),
        keyword("fmin", mel.f_min),
        keyword("fmax", upper_hz(mel, rate)),
        keyword("htk", is_htk ? "True" : "False"),
        is_area ? keyword("norm", std::string("slaney")) : "norm=None"};
    std::vector<std::string> own = arguments;
    if (frame.norm != SORVO_AUDIO_NORM_NONE)
        own.push_back(keyword("fft_norm", word_of(norm_choices, frame.norm)));
    result.push_back({"Python",
                      reflected(mel) + call("mel = sorvo_audio.melspectrogram", own) +
                          decibel_code(mel, "sorvo_audio"),
                      ""});

    const std::string frames =
        is_zeros ? "; one frame less where the hop does not divide the length" : "";
    if (frame.win_n <= frame.fft_n && frame.norm == SORVO_AUDIO_NORM_NONE)
        result.push_back({"librosa",
                          reflected(mel) + call("mel = librosa.feature.melspectrogram", arguments) +
                              decibel_code(mel, "librosa"),
                          "rounding in single precision" + frames});
    if (frame.win_n <= frame.fft_n && frame.norm != SORVO_AUDIO_NORM_LENGTH)
        result.push_back(
            {"torchaudio",
             reflected(mel) +
                 call("transform = torchaudio.transforms.MelSpectrogram",
                      {keyword("sample_rate", rate), keyword("n_fft", frame.fft_n),
                       keyword("win_length", frame.win_n), keyword("hop_length", frame.hop_n),
                       keyword("f_min", mel.f_min), keyword("f_max", upper_hz(mel, rate)),
                       keyword("n_mels", mel.mel_n),
                       keyword(
                           "window_fn",
                           ("torch." + word_of(window_choices, frame.window) + "_window").c_str()),
                       keyword("power", mel.power),
                       keyword("normalized",
                               frame.norm == SORVO_AUDIO_NORM_WINDOW ? "True" : "False"),
                       keyword("center", is_centred ? "True" : "False"),
                       keyword("pad_mode", std::string(is_zeros ? "constant" : "reflect")),
                       is_area ? keyword("norm", std::string("slaney")) : "norm=None",
                       keyword("mel_scale", word_of(mel_scale_choices, mel.mel_formula))}) +
                 "\nmel = transform(torch.from_numpy(y)).numpy()" +
                 decibel_code(mel, "sorvo_audio"),
             "rounding in single precision" + frames});
    if (!preset.empty() && !find_preset(preset).afterwards.empty())
        result.push_back({"afterwards the model takes", find_preset(preset).afterwards, ""});
    return result;
}

}  // namespace sorvo_tool
