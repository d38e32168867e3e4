// sorvo-audio: the library's operations on sound files.
#include <sorvo_audio.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "commands/command.h"
#include "support/failure.h"
#include "support/options.h"

namespace {

using sorvo_tool::Command;
using sorvo_tool::Exit;

#define SORVO_TEXT_OF(number) #number
#define SORVO_VERSION_TEXT(major, minor, patch) \
    SORVO_TEXT_OF(major) "." SORVO_TEXT_OF(minor) "." SORVO_TEXT_OF(patch)

// " mel" once the command is known, to stand behind the program's name in messages.
std::string chosen_command(const CLI::App& root) {
    const auto chosen = root.get_subcommands();
    return chosen.empty() ? "" : " " + chosen.front()->get_name();
}

int run(int argc, char** argv) {
    CLI::App root("Audio features for neural networks, from sound files.", "sorvo-audio");
    root.set_version_flag("--version", "sorvo-audio " SORVO_VERSION_TEXT(
                                           SORVO_AUDIO_VERSION_MAJOR, SORVO_AUDIO_VERSION_MINOR,
                                           SORVO_AUDIO_VERSION_PATCH));
    root.require_subcommand(1);
    root.get_formatter()->column_width(34);
    std::vector<Command> commands;
    for (const auto add : {sorvo_tool::add_info_command, sorvo_tool::add_stft_command,
                           sorvo_tool::add_istft_command, sorvo_tool::add_mel_command,
                           sorvo_tool::add_resample_command, sorvo_tool::add_filter_command,
                           sorvo_tool::add_filtfilt_command, sorvo_tool::add_trim_command,
                           sorvo_tool::add_presets_command, sorvo_tool::add_explain_command})
        commands.push_back(add(root));
    sorvo_tool::add_examples(
        root, {"info speech.wav", "mel speech.wav -o speech.npy --picture speech.png --db",
               "mel --help"});
    try {
        root.parse(argc, argv);
        for (const Command& command : commands)
            if (command.app->parsed()) return static_cast<int>(command.run());
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return root.exit(error);  // --help, --version
        const std::string command = chosen_command(root);
        const std::string first = argc > 1 ? argv[1] : "";
        if (command.empty() && (first.empty() || first[0] != '-')) {
            std::fprintf(
                stderr, "sorvo-audio: %s; see sorvo-audio --help\n",
                first.empty() ? "no command is given" : (first + " is no command").c_str());
            return static_cast<int>(Exit::usage);
        }
        std::fprintf(stderr, "sorvo-audio%s: %s; see sorvo-audio%s --help\n", command.c_str(),
                     error.what(), command.c_str());
        return static_cast<int>(Exit::usage);
    } catch (const sorvo_tool::Failure& failure) {
        std::fprintf(stderr, "sorvo-audio%s: %s\n", chosen_command(root).c_str(), failure.what());
        return static_cast<int>(failure.exit());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sorvo-audio%s: internal error: %s; please report it\n",
                     chosen_command(root).c_str(), error.what());
        return static_cast<int>(Exit::internal);
    }
    return static_cast<int>(Exit::internal);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a file beyond the user's limit is an error of writing it
    return run(argc, argv);
}
