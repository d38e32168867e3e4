#include "settings/presets.h"

#include <algorithm>
#include <map>

namespace sorvo_tool {
namespace {

using Row = std::map<std::string, std::string>;

const std::vector<Row>& table() {
    static const std::vector<Row> rows{
#include "presets_table.inc"
    };
    return rows;
}

// The words of the table are those of the Python package; an empty one is its None.
Preset preset_of(const Row& row) {
    const auto count = [&](const char* key) { return std::stoi(row.at(key)); };
    const auto real = [&](const char* key) { return std::stof(row.at(key)); };
    const auto is = [&](const char* key, const char* word) { return row.at(key) == word; };
    Preset preset{row.at("name"), row.at("about"), {}};
    MelSettings& mel = preset.mel;
    mel.sample_rate = count("sr");
    mel.frame.fft_n = count("n_fft");
    mel.frame.hop_n = count("hop_length");
    mel.frame.center = is("center", "OFF")          ? SORVO_AUDIO_CENTER_NONE
                       : is("pad_mode", "constant") ? SORVO_AUDIO_CENTER_ZEROS
                                                    : SORVO_AUDIO_CENTER_REFLECT;
    mel.pad_n = count("pad");
    mel.power = real("power");
    mel.power_offset = real("power_offset");
    mel.mel_n = count("n_mels");
    mel.f_max = is("fmax", "") ? 0 : real("fmax");
    mel.mel_formula = is("htk", "ON") ? SORVO_AUDIO_MEL_HTK : SORVO_AUDIO_MEL_SLANEY;
    mel.mel_norm = is("norm", "") ? SORVO_AUDIO_MEL_NORM_NONE : SORVO_AUDIO_MEL_NORM_AREA;
    mel.extra_frame_n = count("extra_frames");
    mel.compression = compression_of(row.at("compression"));
    return preset;
}

}  // namespace

const std::vector<Preset>& all_presets() {
    static const std::vector<Preset> presets = [] {
        std::vector<Preset> read;
        for (const Row& row : table()) read.push_back(preset_of(row));
        return read;
    }();
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
