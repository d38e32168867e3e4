#pragma once

#include <cfenv>

namespace sorvo::audio {

/// While it lives, this thread's floating-point arithmetic is that of a new process: rounding to
/// nearest, no exception traps, denormal numbers are kept. Afterwards it is what it was, status
/// flags included.
///
/// Compilers take no notice of the mode, so arithmetic that needs this one is called in a function
/// of its own, which is not inlined.
class DefaultFloatMode {
  public:
    DefaultFloatMode() {
        std::fegetenv(&callers_);
        std::fesetenv(FE_DFL_ENV);
    }
    ~DefaultFloatMode() { std::fesetenv(&callers_); }
    DefaultFloatMode(const DefaultFloatMode&) = delete;
    DefaultFloatMode& operator=(const DefaultFloatMode&) = delete;

  private:
    std::fenv_t callers_;
};

}  // namespace sorvo::audio
