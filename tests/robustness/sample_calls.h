// One ordinary call of every exported function, small enough to be made thousands of times.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace sorvo::audio::test {

/// Makes the call proper: tests wrap it, for instance to let allocations fail meanwhile.
using Invoke = std::function<int(const std::function<int()>& call)>;

struct SampleCall {
    std::string name;
    /// Calls with lengths, rates and bounds that depend on `variant` (0, 1, ...), so that every
    /// variant needs table entries of its own; returns the outputs, sentinels where nothing was
    /// written.
    std::function<std::vector<float>(int variant, const Invoke& invoke, int& status)> run;
};

const std::vector<SampleCall>& sample_calls();

/// Outputs of a sample call that must succeed.
std::vector<float> outputs_of(const SampleCall& call, int variant);

}  // namespace sorvo::audio::test
