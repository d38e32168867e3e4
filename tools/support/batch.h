// Runs one command over one file or many.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "support/facts.h"
#include "support/failure.h"

namespace sorvo_tool {

// One input and the files to be made of it; an empty name means that the file is not wanted.
struct Job {
    std::string input;
    std::string output;
    std::string picture;
    std::string ending;  // of the output, which for streams --format gives
};

// What came of a job that succeeded.
struct Report {
    Facts facts;
    std::vector<std::string> notes;    // what the user did not ask for but should know
    std::vector<std::string> defects;  // what is not finite; the program then ends with 1
    double seconds = 0;                // of sound
};

// How sound is read.
struct ReadingOptions {
    int rate = 0;       // of raw floats and .npy, or against a header; 0: the header's
    int channel_n = 1;  // of raw floats
    bool allow_truncated = false;
    double most_ratio = 64;  // of sample rates, for conversions
};

struct BatchOptions {
    std::vector<std::string> inputs;
    std::string output;
    std::string picture;
    std::string format;
    int thread_n = 1;
    ReadingOptions reading;
    bool force = false;
    bool skip_existing = false;
    bool json = false;
    bool quiet = false;
};

// What a command reads and writes.
struct BatchCommand {
    std::string name;
    std::vector<std::string> formats;  // endings of outputs; the first is the usual one in folders
    bool reads_sound = true;           // else .npy
    bool draws_pictures = false;
    std::function<Report(const Job&)> run;  // called from several threads at once
};

// INPUT..., -o, --picture, --format, -j, --force, --skip-existing, --json and -q; for
// commands that read sound --rate, --channels and --allow-truncated.
void add_batch_options(CLI::App& app, BatchOptions& options, const BatchCommand& command);

// --max-ratio, for commands that convert sample rates.
void add_ratio_option(CLI::App& app, ReadingOptions& options);

// Runs the command on every input, with progress on stderr and results on stdout. A failure stops
// only its own input. Throws a Failure for contradictory options.
Exit run_batch(const BatchOptions& options, const BatchCommand& command);

}  // namespace sorvo_tool
