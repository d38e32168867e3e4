// The commands of sorvo-audio, one file each.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <vector>

#include "support/failure.h"

namespace sorvo_tool {

struct Command {
    CLI::App* app;  // its options; parsed() tells whether the user chose it
    std::function<Exit()> run;
};

Command add_info_command(CLI::App& root);
Command add_stft_command(CLI::App& root);
Command add_istft_command(CLI::App& root);
Command add_mel_command(CLI::App& root);
Command add_mfcc_command(CLI::App& root);
Command add_resample_command(CLI::App& root);
Command add_filter_command(CLI::App& root);
Command add_filtfilt_command(CLI::App& root);
Command add_trim_command(CLI::App& root);
Command add_presets_command(CLI::App& root);
Command add_explain_command(CLI::App& root);
Command add_digest_command(CLI::App& root);

}  // namespace sorvo_tool
