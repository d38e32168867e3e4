// One test per processor level. A level that the processor lacks is skipped, and said to be.
#pragma once

#include <gtest/gtest.h>

#include "simd/level.h"

namespace sorvo::test {

/// A test of code that takes a level: its parameter.
class AtLevel : public testing::TestWithParam<audio::SimdLevel> {
  protected:
    void SetUp() override {
        if (!audio::is_supported(GetParam())) {
            GTEST_SKIP() << "this processor has no " << audio::simd_level_name(GetParam());
        }
    }
};

}  // namespace sorvo::test

/// All tests of a class derived from AtLevel, at all levels. Their names are
/// Levels/<suite>.<test>/<level>, by which the build makes a test program's run for each level.
#define SORVO_TEST_AT_ALL_LEVELS(Suite)                                    \
    INSTANTIATE_TEST_SUITE_P(                                              \
        Levels, Suite, testing::ValuesIn(sorvo::audio::all_simd_levels()), \
        [](const auto& level) { return sorvo::audio::simd_level_name(level.param); })
