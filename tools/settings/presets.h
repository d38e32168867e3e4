// The mel features of well-known models and toolkits.
#pragma once

#include <string>
#include <vector>

#include "settings/mel_settings.h"

namespace sorvo_tool {

struct Preset {
    std::string name;
    std::string about;
    MelSettings mel;
};

// From the table that the Python package reads as well.
const std::vector<Preset>& all_presets();
std::vector<std::string> preset_names();
const Preset& find_preset(const std::string& name);  // which must exist

}  // namespace sorvo_tool
