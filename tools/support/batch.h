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
};

// What came of a job that succeeded.
struct Report {
    Facts facts;
    std::vector<std::string> notes;    // what the user did not ask for but should know
    std::vector<std::string> defects;  // what is not finite; the program then ends with 1
    double seconds = 0;                // of sound
};

// Puts "3 samples read" among the defects if so many values are infinite or NaN.
void count_not_finite(const std::vector<float>& values, const std::string& noun,
                      const std::string& what, Report& report);

struct BatchOptions {
    std::vector<std::string> inputs;
    std::string output;
    std::string picture;
    std::string format;
    int thread_n = 1;
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

// INPUT..., -o, --picture, --format, -j, --force, --skip-existing, --json and -q.
void add_batch_options(CLI::App& app, BatchOptions& options, const BatchCommand& command);

// Runs the command on every input, with progress on stderr and results on stdout. A failure stops
// only its own input. Throws a Failure for contradictory options.
Exit run_batch(const BatchOptions& options, const BatchCommand& command);

}  // namespace sorvo_tool
