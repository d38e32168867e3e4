// Output arrays that notice what is written beyond them, and what is not written at all.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace sorvo::test {

/// n elements between two guard zones, everything filled with a sentinel that no result is.
template <class T>
class Guarded {
    static_assert(sizeof(T) == 4);

  public:
    explicit Guarded(std::size_t n) : n_(n), storage_(n + 2 * guard_n, sentinel()) {}

    void reset() { std::fill(storage_.begin(), storage_.end(), sentinel()); }

    T* data() { return storage_.data() + guard_n; }
    operator T*() { return data(); }
    std::size_t size() const { return n_; }
    std::vector<T> values() const { return {begin(), begin() + static_cast<std::ptrdiff_t>(n_)}; }

    /// Nothing was written but the first `written` elements, and those were all written.
    testing::AssertionResult holds(std::size_t written) const {
        for (std::size_t i = 0; i < storage_.size(); ++i) {
            const T expected = sentinel();
            const bool kept = std::memcmp(&storage_[i], &expected, sizeof(T)) == 0;
            if (kept == (i >= guard_n && i < guard_n + written)) {
                return testing::AssertionFailure()
                       << "element " << static_cast<std::ptrdiff_t>(i - guard_n) << " of " << n_
                       << (kept ? " was not written" : " was written");
            }
        }
        return testing::AssertionSuccess();
    }
    testing::AssertionResult untouched() const { return holds(0); }
    testing::AssertionResult filled() const { return holds(n_); }

  private:
    static constexpr std::size_t guard_n = 64;

    static T sentinel() {
        constexpr unsigned pattern = 0xDEADBEEFU;
        T value;
        std::memcpy(&value, &pattern, sizeof(value));
        return value;
    }
    auto begin() const { return storage_.begin() + static_cast<std::ptrdiff_t>(guard_n); }

    std::size_t n_;
    std::vector<T> storage_;
};

}  // namespace sorvo::test
