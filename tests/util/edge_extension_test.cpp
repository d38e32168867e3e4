#include "util/edge_extension.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/compare.h"
#include "support/random.h"
#include "support/reference.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;
using reference::Padding;

struct Extractor {
    const char* name;
    decltype(&extract_segment_sample_center_reflect) extract;
    Padding padding;
};

class Segment : public testing::TestWithParam<Extractor> {};

// Positions far outside are reached by reflecting to and fro, also for a signal of one sample.
TEST_P(Segment, IsCutFromTheLiterallyPaddedSignal) {
    Random random(1);
    for (const std::size_t sample_n : {1U, 2U, 3U, 5U, 16U}) {
        const std::vector<float> x = random.values(sample_n);
        for (const std::size_t pad_n : {0U, 1U, 2U, 4U, 15U, 40U}) {
            const std::vector<float> whole = reference::padded(x, pad_n, GetParam().padding);
            for (std::size_t start = 0; start < whole.size(); ++start) {
                for (std::size_t n = 0; start + n <= whole.size(); n += 3) {
                    std::vector<float> segment(n, -9.0F);
                    GetParam().extract(segment, x.data(), static_cast<int>(sample_n),
                                       static_cast<int>(start), static_cast<int>(pad_n));
                    const auto from = whole.begin() + static_cast<std::ptrdiff_t>(start);
                    ASSERT_TRUE(same_bits(
                        segment, std::vector<float>(from, from + static_cast<std::ptrdiff_t>(n))))
                        << sample_n << " samples, padding " << pad_n << ", start " << start;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Segment,
    testing::Values(Extractor{"zeros", extract_segment_sample_center_zeros_padded, Padding::zeros},
                    Extractor{"reflect", extract_segment_sample_center_reflect, Padding::reflect},
                    Extractor{"odd", extract_segment_sample_center_odd, Padding::odd},
                    Extractor{"constant", extract_segment_sample_center_constant,
                              Padding::constant}),
    [](const auto& kind) { return kind.param.name; });

}  // namespace
