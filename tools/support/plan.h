// From the inputs and outputs of a command line to a list of jobs.
#pragma once

#include <vector>

#include "support/batch.h"

namespace sorvo_tool {

struct Plan {
    std::vector<Job> jobs;
    std::vector<Failure> failures;  // folders without inputs
    std::size_t skipped_n = 0;      // jobs left out because their files exist
    bool is_single = false;         // one input file, named outputs
};

// An input folder stands for all its sound files (or .npy files), at any depth, in sorted order.
// Outputs go under the same names into the output folder, subfolders included.
Plan make_plan(const BatchOptions& options, const BatchCommand& command);

}  // namespace sorvo_tool
