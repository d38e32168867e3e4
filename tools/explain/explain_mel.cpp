#include <cmath>

#include "explain/code.h"
#include "explain/explanation.h"
#include "support/text.h"

namespace sorvo_tool {
namespace {

std::string decibel_code(const MelSettings& mel, const std::string& module) {
    if (!mel.in_db) return "";
    std::string powers = mel.power == 2 ? "mel" : "mel ** " + literal(2 / mel.power);
    return "\n" + call("mel = " + module + ".power_to_db",
                       {powers, "ref=np.max",
                        keyword("top_db", mel.top_db < 0 ? "None" : literal(mel.top_db).c_str())});
}

std::string padded_n(const MelSettings& mel, int rate) {
    return std::to_string(std::lround(mel.pad_to_seconds * rate));
}

// Frames that a preset takes of a signal of n samples.
std::string frame_limit(const MelSettings& mel) {
    const int extra_n = *mel.extra_frame_n;
    return "n // " + std::to_string(mel.frame.hop_n) +
           (extra_n == 0 ? "" : " + " + std::to_string(extra_n));
}

// What comes before the transform: the sound with the ends that it takes.
std::string prepared(const MelSettings& mel, int rate) {
    std::string code;
    if (mel.pad_to_seconds > 0)
        code += "y = np.pad(y, (0, " + padded_n(mel, rate) + " - len(y)))\n";
    if (mel.extra_frame_n) code += "n = len(y)\n";
    if (mel.pad_n > 0) code += "y = np.pad(y, " + std::to_string(mel.pad_n) + ", \"reflect\")\n";
    return code;
}

// What comes after it, in the formula that the models use.
std::string finished(const MelSettings& mel, const std::string& module) {
    std::string code;
    if (mel.extra_frame_n) code += "\nmel = mel[..., :" + frame_limit(mel) + "]";
    if (mel.compression == Compression::log) code += "\nmel = np.log(np.maximum(mel, 1e-5))";
    if (mel.compression == Compression::whisper)
        code +=
            "\nmel = np.log10(np.maximum(mel, 1e-10))"
            "\nmel = (np.maximum(mel, mel.max() - 8) + 4) / 4";
    return code + decibel_code(mel, module);
}

// Python's name of a preset, and what the options changed of it.
std::string preset_code(const MelSettings& mel, const std::string& preset) {
    MelOptions unchanged;
    unchanged.preset = preset;
    const MelSettings base = settle(unchanged);
    const FrameSettings& frame = mel.frame;
    const std::string name = "sorvo_audio.presets." + preset;
    std::vector<std::string> changes{name};
    const auto change = [&](bool is_changed, const std::string& code) {
        if (is_changed) changes.push_back(code);
    };
    const auto count = [&](const char* key, int value, int old) {
        change(value != old, keyword(key, value));
    };
    const auto real = [&](const char* key, float value, float old) {
        change(value != old, keyword(key, value));
    };
    count("sr", mel.sample_rate, base.sample_rate);
    count("n_fft", frame.fft_n, base.frame.fft_n);
    count("hop_length", frame.hop_n, base.frame.hop_n);
    count("win_length", frame.win_n, frame.fft_n);
    change(frame.window != base.frame.window,
           keyword("window", word_of(window_choices, frame.window)));
    const bool is_centred = frame.center != SORVO_AUDIO_CENTER_NONE;
    if (frame.center != base.frame.center) {
        change(true, keyword("center", is_centred ? "True" : "False"));
        const bool is_zeros = frame.center == SORVO_AUDIO_CENTER_ZEROS;
        change(is_centred, keyword("pad_mode", std::string(is_zeros ? "constant" : "reflect")));
    }
    change(frame.norm != base.frame.norm,
           frame.norm == SORVO_AUDIO_NORM_NONE
               ? "fft_norm=None"
               : keyword("fft_norm", word_of(norm_choices, frame.norm)));
    count("pad", mel.pad_n, base.pad_n);
    real("power", mel.power, base.power);
    count("n_mels", mel.mel_n, base.mel_n);
    real("fmin", mel.f_min, base.f_min);
    real("fmax", mel.f_max, base.f_max);
    change(mel.mel_formula != base.mel_formula,
           keyword("htk", mel.mel_formula == SORVO_AUDIO_MEL_HTK ? "True" : "False"));
    change(mel.mel_norm != base.mel_norm, mel.mel_norm == SORVO_AUDIO_MEL_NORM_AREA
                                              ? keyword("norm", std::string("slaney"))
                                              : "norm=None");
    change(mel.compression != base.compression, "compression=None");
    const std::string seconds =
        mel.pad_to_seconds > 0 ? ", pad_to_seconds=" + exact_number(mel.pad_to_seconds) : "";
    return (changes.size() == 1 ? "mel = " + name : call("mel = dataclasses.replace", changes)) +
           ".features(y" + seconds + ")" + decibel_code(mel, "sorvo_audio");
}

// The bands where a constant is added to the squared magnitudes.
std::string c_offset_bands(const MelSettings& mel, int rate) {
    const FrameSettings& frame = mel.frame;
    const std::string freq_n = std::to_string(frame.fft_n / 2 + 1);
    const std::string mel_n = std::to_string(mel.mel_n);
    return call("sorvoAudioGetSpectrogram",
                {"power", "y", "y_n", std::to_string(frame.fft_n), std::to_string(frame.hop_n),
                 std::to_string(frame.win_n), c_window(frame.window), "frame_n",
                 c_center(frame.center), "2.0f", c_norm(frame.norm)}) +
           ";\n/* each magnitude[i] = sqrtf(power[2 * i] + " + literal(mel.power_offset, true) +
           ") */\n" +
           call(
               "sorvoAudioGetFBMatrix",
               {"bank", freq_n, literal(mel.f_min, true), literal(upper_hz(mel, rate), true), mel_n,
                std::to_string(rate), c_mel_norm(mel.mel_norm), c_mel_formula(mel.mel_formula)}) +
           ";\n" +
           call("sorvoAudioConvertToMel", {"mel", "magnitude", "bank", freq_n, "frame_n", mel_n}) +
           ";";
}

// mel in decibels of 1, and what makes them of those of the largest.
std::string c_levels(const std::string& cell_n) {
    return "\nfloat pair[2] = {1.0f, largest}; /* of mel */\n" +
           call("sorvoAudioConvertPowerToDB", {"pair", "pair", "2", "-1.0f"}) + ";\n" +
           call("sorvoAudioConvertPowerToDB", {"mel", "mel", cell_n, "80.0f"}) + ";\n";
}

std::string c_compression(const MelSettings& mel) {
    const std::string cell_n = std::to_string(mel.mel_n) + " * frame_n";
    if (mel.compression == Compression::log)
        return "\n/* each x[i] = max(mel[i], 1e-5f); mel[i] = (x[i] < 1 ? 1 / x[i] : x[i]) - 1 "
               "*/\n" +
               call("sorvoAudioLog1p", {"mel", "mel", cell_n}) +
               ";\n/* where x[i] < 1, mel[i] = -mel[i] */";
    if (mel.compression == Compression::whisper)
        return c_levels(cell_n) + "/* each mel[i] = (mel[i] + (pair[1] - pair[0]) + 40) / 40 */";
    return "";
}

std::string c_code(const MelSettings& mel, int rate) {
    const FrameSettings& frame = mel.frame;
    const std::string n_fft = std::to_string(frame.fft_n);
    const std::string hop = std::to_string(frame.hop_n);
    const std::string mel_n = std::to_string(mel.mel_n);
    std::string code;
    if (mel.pad_to_seconds > 0) code += "/* zeros make y_n " + padded_n(mel, rate) + " */\n";
    if (mel.extra_frame_n) code += "/* n is y_n */\n";
    if (mel.pad_n > 0)
        code += "/* y is reflected by " + std::to_string(mel.pad_n) + " samples at both ends */\n";
    code += call("sorvoAudioGetFrameLen", {"&frame_n", "y_n", n_fft, hop, c_center(frame.center)}) +
            ";\n";
    if (mel.extra_frame_n) code += "/* at most " + frame_limit(mel) + " frames */\n";
    if (mel.power_offset > 0)
        code += c_offset_bands(mel, rate);
    else
        code += call("sorvoAudioGetMelSpectrogram",
                     {"mel", "y", "y_n", std::to_string(rate), n_fft, hop,
                      std::to_string(frame.win_n), c_window(frame.window), "frame_n",
                      c_center(frame.center), literal(mel.power, true), c_norm(frame.norm),
                      literal(mel.f_min, true), literal(upper_hz(mel, rate), true), mel_n,
                      c_mel_norm(mel.mel_norm), c_mel_formula(mel.mel_formula)}) +
                ";";
    code += c_compression(mel);
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
                      !preset.empty()
                          ? preset_code(mel, preset)
                          : prepared(mel, rate) + call("mel = sorvo_audio.melspectrogram", own) +
                                decibel_code(mel, "sorvo_audio"),
                      ""});
    if (mel.power_offset > 0) return result;

    const std::string frames = is_zeros && !mel.extra_frame_n
                                   ? "; one frame less where the hop does not divide the length"
                                   : "";
    if (frame.win_n <= frame.fft_n && frame.norm == SORVO_AUDIO_NORM_NONE)
        result.push_back({"librosa",
                          prepared(mel, rate) +
                              call("mel = librosa.feature.melspectrogram", arguments) +
                              finished(mel, "librosa"),
                          "rounding in single precision" + frames});
    if (frame.win_n <= frame.fft_n && frame.norm != SORVO_AUDIO_NORM_LENGTH)
        result.push_back(
            {"torchaudio",
             prepared(mel, rate) +
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
                 "\nmel = transform(torch.from_numpy(y)).numpy()" + finished(mel, "sorvo_audio"),
             "rounding in single precision" + frames});
    return result;
}

Explanation explain_mfcc(MelSettings mel, const std::string& preset, int sample_rate,
                         int coefficient_n) {
    mel.compression = Compression::none;
    const std::string n = std::to_string(coefficient_n);
    const std::string band_n = std::to_string(mel.mel_n);
    const std::string row_n = std::to_string(mel.mel_n + 1);
    Explanation result = explain(mel, preset, sample_rate);
    for (Equivalent& equivalent : result) {
        std::string& code = equivalent.code;
        if (equivalent.name == "C")
            code += c_levels(band_n + " * frame_n") +
                    "/* each mel[i] += pair[1] - pair[0]; a row of zeros is added; basis, [" + n +
                    "][" + row_n + "], holds\n   sqrt(k > 0 ? 2.0 / " + band_n + " : 1.0 / " +
                    band_n + ") * cos(pi * k * (2 * i + 1) / " + std::to_string(2 * mel.mel_n) +
                    "), and 0 for i = " + band_n + " */\n" +
                    call("sorvoAudioConvertToMel", {"mfcc", "mel", "basis", row_n, "frame_n", n}) +
                    ";";
        else if (equivalent.name == "torchaudio")
            code +=
                "\nmel = torchaudio.functional.amplitude_to_DB(torch.from_numpy(mel), 10, 1e-10, "
                "0, 80)\nmfcc = (mel.T @ torchaudio.functional.create_dct(" +
                n + ", " + band_n + ", \"ortho\")).T.numpy()";
        else if (equivalent.name == "librosa")
            code += "\nmfcc = librosa.feature.mfcc(S=librosa.power_to_db(mel), n_mfcc=" + n + ")";
        else
            code += "\nmfcc = sorvo_audio.mfcc(S=sorvo_audio.power_to_db(mel), n_mfcc=" + n + ")";
    }
    return result;
}

}  // namespace sorvo_tool
