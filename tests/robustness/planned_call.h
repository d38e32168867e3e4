// Any call of any exported function: arguments from a source of numbers, and what the header says
// about them. Used with random hostile numbers and by the fuzzer.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace sorvo::audio::test {

/// Where arguments come from.
class ArgumentSource {
  public:
    virtual ~ArgumentSource() = default;
    virtual int integer() = 0;
    virtual float real() = 0;
    /// A number in 0 ... n - 1.
    virtual int choice(int n) = 0;
};

struct PlannedCall {
    /// "name(arguments)".
    std::string text;
    /// Whether the header accepts the arguments; if not, the status is -1 and no buffer is touched.
    bool valid = true;
    /// Bytes of each array argument as the header documents them (0 for a null pointer).
    std::vector<double> buffer_bytes;
    /// Rough number of operations and of bytes that the library may allocate and keep.
    double work = 0.0;
    double storage = 0.0;
    /// Makes the call with these buffers.
    std::function<int(const std::vector<void*>& buffers)> invoke;
};

constexpr int export_count = 22;

PlannedCall plan_call(ArgumentSource& source);

}  // namespace sorvo::audio::test
