#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>

namespace sorvo::audio {

/// The working storage of one call, not initialised, in parts that start at cache lines. It is one
/// allocation: several large ones would be given back to the system and faulted in anew by every
/// call.
class Workspace {
  public:
    /// Room for parts of so many floats, to be taken in any order.
    explicit Workspace(std::initializer_list<std::size_t> parts) : storage_(allocate(parts)) {
        const auto address = reinterpret_cast<std::uintptr_t>(storage_.get());
        next_ = storage_.get() + (line - address / sizeof(float) % line) % line;
    }

    float* take(std::size_t n) {
        float* const start = next_;
        next_ += whole_lines(n);
        return start;
    }

  private:
    static constexpr std::size_t line = 16;  // floats

    static std::size_t whole_lines(std::size_t n) { return (n + line - 1) / line * line; }

    static float* allocate(std::initializer_list<std::size_t> parts) {
        std::size_t n = line;
        for (const std::size_t part : parts) {
            n += whole_lines(part);
        }
        return new float[n];
    }

    std::unique_ptr<float[]> storage_;
    float* next_;
};

}  // namespace sorvo::audio
