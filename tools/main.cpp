// sorvo-audio: the library's operations on sound files.
#include <sorvo_audio.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "commands/command.h"
#include "support/failure.h"
#include "support/near_miss.h"
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

// "; did you mean --n-fft?", or nothing.
std::string suggestion(const std::string& given, const std::vector<std::string>& known) {
    const std::string meant = sorvo_tool::nearest(given, known);
    return meant.empty() ? "" : "; did you mean " + meant + "?";
}

// Says which option is none, of the command, that of `explain` or the program; empty if there is
// no such option.
std::string describe_unknown_option(const CLI::App& root) {
    std::vector<std::string> known;
    for (const CLI::App* app = &root; app != nullptr;
         app = app->get_subcommands().empty() ? nullptr : app->get_subcommands().front())
        for (const CLI::Option* option : app->get_options())
            for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
    for (const std::string& word : root.remaining(true)) {
        if (word.size() < 2 || word[0] != '-') continue;
        const std::string name = word.substr(0, word.find('='));
        return name + " is no option here" + suggestion(name, known);
    }
    return "";
}

std::string describe(const CLI::ParseError& error, const CLI::App& root) {
    const std::string unknown = describe_unknown_option(root);
    if (!unknown.empty()) return unknown;
    const auto words = root.remaining(true);
    if (!root.get_subcommands().empty()) return error.what();
    if (words.empty()) return "no command is given";
    std::vector<std::string> known;
    for (const CLI::App* app : root.get_subcommands([](const CLI::App*) { return true; }))
        known.push_back(app->get_name());
    return words.front() + " is no command" + suggestion(words.front(), known);
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
                           sorvo_tool::add_mfcc_command, sorvo_tool::add_resample_command,
                           sorvo_tool::add_filter_command, sorvo_tool::add_filtfilt_command,
                           sorvo_tool::add_trim_command, sorvo_tool::add_presets_command,
                           sorvo_tool::add_explain_command, sorvo_tool::add_digest_command})
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
        std::fprintf(stderr, "sorvo-audio%s: %s; see sorvo-audio%s --help\n", command.c_str(),
                     describe(error, root).c_str(), command.c_str());
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
    std::signal(SIGPIPE, SIG_IGN);  // so is a reader that went away
    const int code = run(argc, argv);
    std::cout.flush();  // --help and --version
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good()) return code;
    std::fputs(
        "sorvo-audio: standard output: cannot be written; free the disk or give it another place\n",
        stderr);
    return std::max(code, static_cast<int>(Exit::cannot_write));
}
