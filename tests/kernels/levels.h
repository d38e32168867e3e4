// What every kernel test needs: the levels of this processor, and comparison bit for bit.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "simd/level.h"

namespace sorvo::audio::test {

/// Runs the body for every level that the processor has; says which ones it has not.
template <class Body>
void for_each_level(Body body) {
    for (const SimdLevel level : all_simd_levels()) {
        const char* const name = simd_level_name(level);
        if (!is_supported(level)) {
            ::testing::Test::RecordProperty(name, "not supported by this processor");
            continue;
        }
        SCOPED_TRACE(name);
        body(level);
    }
}

constexpr std::ptrdiff_t none = -1;

/// The first element that differs in any bit; NaNs count as equal. `none` where there is none.
template <class T>
std::ptrdiff_t first_difference(const std::vector<T>& a, const std::vector<T>& b) {
    if (a.size() != b.size()) {
        return static_cast<std::ptrdiff_t>(std::min(a.size(), b.size()));
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::memcmp(&a[i], &b[i], sizeof(T)) != 0 && !(std::isnan(a[i]) && std::isnan(b[i]))) {
            return static_cast<std::ptrdiff_t>(i);
        }
    }
    return none;
}

}  // namespace sorvo::audio::test
