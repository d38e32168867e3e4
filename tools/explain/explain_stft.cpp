#include "explain/code.h"
#include "explain/explanation.h"

namespace sorvo_tool {
namespace {

const char* const rounding = "rounding in single precision";

bool is_centred(const FrameSettings& frame) {
    return frame.center != SORVO_AUDIO_CENTER_NONE;
}

std::string pad_mode(const FrameSettings& frame) {
    return frame.center == SORVO_AUDIO_CENTER_ZEROS ? "constant" : "reflect";
}

// "norm" of the Python package.
std::string norm_keyword(const FrameSettings& frame) {
    return frame.norm == SORVO_AUDIO_NORM_NONE ? "norm=None"
                                               : keyword("norm", word_of(norm_choices, frame.norm));
}

// NumPy: the window in its frame, whatever the lengths.
std::string window_code(const FrameSettings& frame) {
    const std::string made = "window = scipy.signal.get_window(\"" +
                             word_of(window_choices, frame.window) + "\", " +
                             std::to_string(frame.win_n) + ")";
    const int spare_n = frame.fft_n - frame.win_n;
    if (spare_n == 0) return made + "\n";
    if (spare_n > 0)
        return made + "\nwindow = np.pad(window, (" + std::to_string(spare_n / 2) + ", " +
               std::to_string(spare_n - spare_n / 2) + "))\n";
    return made + "[" + std::to_string(-spare_n / 2) + ":][:" + std::to_string(frame.fft_n) + "]\n";
}

// What a plain spectrum is multiplied by.
std::string norm_factor(const FrameSettings& frame) {
    if (frame.norm == SORVO_AUDIO_NORM_WINDOW) return " / np.sqrt((window ** 2).sum())";
    if (frame.norm == SORVO_AUDIO_NORM_LENGTH) return " * 2 / " + std::to_string(frame.fft_n);
    return "";
}

std::string power_code(float power) {
    return power > 0 ? "\nstft = np.abs(stft) ** " + literal(power) : "";
}

std::string frame_count_note(const FrameSettings& frame) {
    return frame.center == SORVO_AUDIO_CENTER_ZEROS
               ? "; it has one frame less where the hop does not divide the length"
               : "";
}

}  // namespace

Explanation explain(const StftSettings& settings) {
    const FrameSettings& frame = settings.frame;
    const std::string n_fft = std::to_string(frame.fft_n);
    const std::string hop = std::to_string(frame.hop_n);
    const std::string win = std::to_string(frame.win_n);
    const bool is_cropped = frame.win_n > frame.fft_n;
    Explanation result;

    result.push_back(
        {"C",
         call("sorvoAudioGetFrameLen", {"&frame_n", "y_n", n_fft, hop, c_center(frame.center)}) +
             ";\n" +
             call("sorvoAudioGetSpectrogram",
                  {"stft", "y", "y_n", n_fft, hop, win, c_window(frame.window), "frame_n",
                   c_center(frame.center), literal(settings.power, true), c_norm(frame.norm)}) +
             ";",
         settings.power > 0 ? "none; powers lie in the real parts" : ""});

    std::vector<std::string> arguments{"y",
                                       keyword("n_fft", frame.fft_n),
                                       keyword("hop_length", frame.hop_n),
                                       keyword("win_length", frame.win_n),
                                       keyword("window", word_of(window_choices, frame.window)),
                                       keyword("center", is_centred(frame) ? "True" : "False"),
                                       keyword("pad_mode", pad_mode(frame))};
    std::vector<std::string> own = arguments;
    if (settings.power > 0) own.push_back(keyword("power", settings.power));
    own.push_back(norm_keyword(frame));
    result.push_back({"Python", call("stft = sorvo_audio.stft", own), ""});

    if (frame.hop_n <= frame.fft_n) {
        const char* const boundary = frame.center == SORVO_AUDIO_CENTER_NONE      ? "None"
                                     : frame.center == SORVO_AUDIO_CENTER_REFLECT ? "\"even\""
                                                                                  : "\"zeros\"";
        const std::string padded = frame.center == SORVO_AUDIO_CENTER_ZEROS ? "True" : "False";
        result.push_back(
            {"scipy",
             window_code(frame) +
                 call("stft = scipy.signal.stft",
                      {"y", "window=window", keyword("nperseg", frame.fft_n),
                       keyword("noverlap", frame.fft_n - frame.hop_n),
                       keyword("boundary", boundary), keyword("padded", padded.c_str())}) +
                 "[2] * window.sum()" + norm_factor(frame) + power_code(settings.power),
             rounding});
    }
    if (!is_cropped) {
        const std::string scale =
            frame.norm == SORVO_AUDIO_NORM_NONE ? "" : window_code(frame) + "stft = stft";
        const std::string scaled =
            (scale.empty() ? "" : "\n" + scale + norm_factor(frame)) + power_code(settings.power);
        result.push_back({"librosa", call("stft = librosa.stft", arguments) + scaled,
                          std::string(rounding) + frame_count_note(frame)});
        result.push_back(
            {"torch",
             call("stft = torch.stft",
                  {"torch.from_numpy(y)", keyword("n_fft", frame.fft_n),
                   keyword("hop_length", frame.hop_n), keyword("win_length", frame.win_n),
                   keyword("window", ("torch." + word_of(window_choices, frame.window) +
                                      "_window(" + win + ")")
                                         .c_str()),
                   keyword("center", is_centred(frame) ? "True" : "False"),
                   keyword("pad_mode", pad_mode(frame)), "return_complex=True"}) +
                 ".numpy()" + scaled,
             std::string(rounding) + frame_count_note(frame)});
    }
    return result;
}

Explanation explain(const IstftOptions& options, int fft_n) {
    const FrameSettings frame = settle(options, fft_n / 2 + 1);
    const std::string hop = std::to_string(frame.hop_n);
    const std::string win = std::to_string(frame.win_n);
    const std::string length = options.length ? std::to_string(*options.length) : "";
    Explanation result;

    const std::string sample_n = length.empty() ? "y_n" : length;
    std::string c;
    if (length.empty())
        c = call("sorvoAudioGetSampleLen",
                 {"&y_n", "frame_n", std::to_string(fft_n / 2 + 1), hop, c_center(frame.center)}) +
            ";\n";
    c += call("sorvoAudioGetInverseSpectrogram",
              {"y", "stft", "frame_n", std::to_string(fft_n / 2 + 1), hop, win,
               c_window(frame.window), sample_n, c_center(frame.center), c_norm(frame.norm)}) +
         ";";
    result.push_back({"C", c, ""});

    std::vector<std::string> arguments{"stft",
                                       keyword("hop_length", frame.hop_n),
                                       keyword("win_length", frame.win_n),
                                       keyword("window", word_of(window_choices, frame.window)),
                                       keyword("center", is_centred(frame) ? "True" : "False"),
                                       keyword("length", length.empty() ? "None" : length.c_str())};
    std::vector<std::string> own = arguments;
    own.push_back(norm_keyword(frame));
    result.push_back({"Python", call("y = sorvo_audio.istft", own), ""});

    const std::string undo = frame.norm == SORVO_AUDIO_NORM_LENGTH
                                 ? "stft = stft * " + std::to_string(fft_n) + " / 2\n"
                                 : "";
    if (frame.hop_n <= frame.fft_n)
        result.push_back(
            {"scipy",
             undo + window_code(frame) +
                 call("y = scipy.signal.istft",
                      {"stft / window.sum()", "window=window", keyword("nperseg", fft_n),
                       keyword("noverlap", fft_n - frame.hop_n),
                       keyword("boundary", is_centred(frame) ? "True" : "False")}) +
                 "[1]" + (length.empty() ? "" : "[:" + length + "]"),
             std::string(rounding) +
                 (frame.fft_n % frame.hop_n != 0 ? "; the end may be longer or shorter" : "")});
    if (frame.win_n <= frame.fft_n)
        result.push_back({"librosa", undo + call("y = librosa.istft", arguments),
                          std::string(rounding) + ", except where frames hardly overlap"});
    return result;
}

}  // namespace sorvo_tool
