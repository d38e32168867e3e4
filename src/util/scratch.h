#pragma once

#include <cstddef>

namespace sorvo::audio {

/// Working storage of one short call, not initialised, aligned to a cache line. A few buffers of up
/// to 64 KiB are kept from call to call, as asking the system for them would cost as much as a
/// transform; more is asked for.
class Scratch {
  public:
    explicit Scratch(std::size_t float_n);
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    float* data() { return data_; }

  private:
    float* data_;
    bool kept_;  ///< to be kept
};

/// So much is rather taken from the stack, with __builtin_alloca_with_align: 12 KiB.
constexpr std::size_t stack_scratch_n = 3072;

}  // namespace sorvo::audio
