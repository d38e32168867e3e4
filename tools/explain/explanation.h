// The same numbers elsewhere: calls of other tools that stand for a command of this one.
#pragma once

#include <string>
#include <vector>

#include "settings/filter_settings.h"
#include "settings/mel_settings.h"
#include "settings/stft_settings.h"
#include "settings/trim_settings.h"

namespace sorvo_tool {

struct Equivalent {
    std::string name;        // "C", "Python", "scipy", ...
    std::string code;        // from y, the samples, and sr, their rate
    std::string difference;  // to the numbers of this program; empty: none, bit for bit
};
using Explanation = std::vector<Equivalent>;

// Where the settings leave the rate to the file, `sample_rate` stands for it.
Explanation explain(const StftSettings& settings);
Explanation explain(const IstftOptions& options, int fft_n);
Explanation explain(const MelSettings& settings, const std::string& preset, int sample_rate);
Explanation explain_mfcc(MelSettings settings, const std::string& preset, int sample_rate,
                         int coefficient_n);
Explanation explain_resample(int from_rate, int to_rate);
Explanation explain(const FilterSettings& settings);
Explanation explain(const ZeroPhaseSettings& settings);
Explanation explain(const TrimSettings& settings);

}  // namespace sorvo_tool
