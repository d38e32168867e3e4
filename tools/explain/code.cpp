#include "explain/code.h"

#include <sorvo_audio.h>

#include <array>
#include <charconv>

#include "support/text.h"

namespace sorvo_tool {

std::string call(const std::string& name, const std::vector<std::string>& arguments) {
    const std::size_t first_column =
        name.rfind('\n') == std::string::npos ? name.size() + 1 : name.size() - name.rfind('\n');
    std::string text = name + "(";
    std::size_t column = first_column;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string part = arguments[i] + (i + 1 < arguments.size() ? "," : ")");
        if (i > 0 && column + 1 + part.size() > 96) {
            text += "\n" + std::string(first_column, ' ');
            column = first_column;
        } else if (i > 0) {
            text += " ";
            ++column;
        }
        text += part;
        column += part.size();
    }
    return text;
}

std::string keyword(const std::string& key, int value) {
    return key + "=" + std::to_string(value);
}
std::string keyword(const std::string& key, float value) {
    return key + "=" + literal(value);
}
std::string keyword(const std::string& key, const std::string& text) {
    return key + "=\"" + text + "\"";
}
std::string keyword(const std::string& key, const char* code) {
    return key + "=" + code;
}

std::string c_window(int window) {
    return window == SORVO_AUDIO_WINDOW_HANN ? "SORVO_AUDIO_WINDOW_HANN"
                                             : "SORVO_AUDIO_WINDOW_HAMMING";
}

std::string c_center(int center) {
    if (center == SORVO_AUDIO_CENTER_NONE) return "SORVO_AUDIO_CENTER_NONE";
    return center == SORVO_AUDIO_CENTER_REFLECT ? "SORVO_AUDIO_CENTER_REFLECT"
                                                : "SORVO_AUDIO_CENTER_ZEROS";
}

std::string c_norm(int norm) {
    if (norm == SORVO_AUDIO_NORM_NONE) return "SORVO_AUDIO_NORM_NONE";
    return norm == SORVO_AUDIO_NORM_WINDOW ? "SORVO_AUDIO_NORM_WINDOW" : "SORVO_AUDIO_NORM_LENGTH";
}

std::string c_mel_norm(int norm) {
    return norm == SORVO_AUDIO_MEL_NORM_AREA ? "SORVO_AUDIO_MEL_NORM_AREA"
                                             : "SORVO_AUDIO_MEL_NORM_NONE";
}

std::string c_mel_formula(int formula) {
    return formula == SORVO_AUDIO_MEL_SLANEY ? "SORVO_AUDIO_MEL_SLANEY" : "SORVO_AUDIO_MEL_HTK";
}

std::string c_pad(int pad) {
    switch (pad) {
        case SORVO_AUDIO_PAD_NONE:
            return "SORVO_AUDIO_PAD_NONE";
        case SORVO_AUDIO_PAD_ODD:
            return "SORVO_AUDIO_PAD_ODD";
        case SORVO_AUDIO_PAD_REFLECT:
            return "SORVO_AUDIO_PAD_REFLECT";
        default:
            return "SORVO_AUDIO_PAD_CONSTANT";
    }
}

std::string literal(float value, bool suffix) {
    std::array<char, 32> digits{};
    std::string text(digits.data(),
                     std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
    if (text.find_first_of(".en") == std::string::npos) text += ".0";
    return suffix ? text + "f" : text;
}

std::string list_of(const std::vector<float>& values, bool suffix) {
    return joined(values, ", ", [&](float value) { return literal(value, suffix); });
}

}  // namespace sorvo_tool
