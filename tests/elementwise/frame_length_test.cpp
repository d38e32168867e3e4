#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using namespace sorvo::test;

TEST(FixFrameLen, CutsOrFillsEveryRow) {
    Random random(9);
    for (const std::size_t rows : {1U, 3U}) {
        for (const std::size_t from : {1U, 4U, 7U}) {
            for (const std::size_t to : {1U, 4U, 5U, 9U}) {
                const std::vector<float> x = random.values(rows * from);
                Guarded<float> out(rows * to);
                ASSERT_EQ(
                    sorvoAudioFixFrameLen(out, x.data(), static_cast<int>(rows),
                                          static_cast<int>(to), static_cast<int>(from), -0.5F),
                    SORVO_AUDIO_OK);
                EXPECT_TRUE(out.filled());
                for (std::size_t i = 0; i < rows * to; ++i) {
                    const float expected = i % to < from ? x[i / to * from + i % to] : -0.5F;
                    EXPECT_EQ(out.data()[i], expected) << from << " to " << to << " at " << i;
                }
            }
        }
    }
}

}  // namespace
