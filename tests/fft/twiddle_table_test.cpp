#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

#include "fft/fft_table.h"
#include "support/compare.h"
#include "support/reference.h"
#include "util/exceptions.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

/// The roots that a table should hold, in its own layout: plain (cos, sin) pairs, or for powers of
/// two groups of the roots 2k, k, 3k, each expanded into the rows of a complex multiplication.
std::vector<long double> expected_table(int n, bool inverse) {
    const auto angle = [&](int j) {
        return (inverse ? 2 : -2) * reference::pi * static_cast<long double>(j) / n;
    };
    std::vector<long double> table;
    if (!is_pow2(n)) {
        for (int j = 0; j < n; ++j) {
            table.insert(table.end(), {std::cos(angle(j)), std::sin(angle(j))});
        }
        return table;
    }
    for (int k = 0; k < n / 4; ++k) {
        for (const int j : {2 * k, k}) {
            const long double c = std::cos(angle(j));
            const long double s = std::sin(angle(j));
            table.insert(table.end(), {c, s, -s, c});
        }
        const long double c = std::cos(angle(3 * k));
        const long double s = std::sin(angle(3 * k));
        table.insert(table.end(), {-s, c, c, s});
    }
    table.resize(3 * static_cast<std::size_t>(n));
    return table;
}

TEST(TwiddleTable, HoldsTheRootsOfUnityInItsLayouts) {
    for (const int n : {1, 2, 3, 4, 6, 7, 8, 12, 16, 97, 400, 1024, 4096}) {
        SCOPED_TRACE(n);
        for (const bool inverse : {false, true}) {
            const std::vector<float>& table =
                inverse ? FftTable::instance().ref_inv_table(n) : FftTable::instance().ref_table(n);
            const std::vector<long double> expected = expected_table(n, inverse);
            ASSERT_EQ(table.size(), expected.size());
            for (std::size_t i = 0; i < table.size(); ++i) {
                // Angles up to 2 pi were rounded to float: half an ulp of 4 ... 8, plus rounding.
                EXPECT_NEAR(table[i], static_cast<double>(expected[i]), 2.4e-7 + 6e-8) << i;
            }
        }
    }
}

TEST(TwiddleTable, DirectionsDifferInTheSignOfEverySine) {
    for (const int n : {6, 16}) {
        const std::vector<float>& forward = FftTable::instance().ref_table(n);
        const std::vector<float>& inverse = FftTable::instance().ref_inv_table(n);
        const std::vector<long double> signs = expected_table(n, false);
        std::vector<float> flipped = forward;
        for (std::size_t i = 0; i < flipped.size(); ++i) {
            const std::size_t in_group = i % 12;
            const bool sine = is_pow2(n) ? in_group == 1 || in_group == 2 || in_group == 5 ||
                                               in_group == 6 || in_group == 8 || in_group == 11
                                         : i % 2 == 1;
            if (sine && i < signs.size()) flipped[i] = -flipped[i];
        }
        EXPECT_TRUE(same_bits(inverse, flipped)) << n;  // so the forward sine of 0 is -0
        EXPECT_TRUE(std::signbit(forward[n == 6 ? 1 : 5])) << n;
    }
}

TEST(TwiddleTable, IsBuiltOnceAndRefusesEmptyTransforms) {
    FftTable& tables = FftTable::instance();
    EXPECT_EQ(&tables.ref_table(48), &tables.ref_table(48));
    EXPECT_EQ(&tables.ref_inv_table(64), &tables.ref_inv_table(64));
    EXPECT_NE(&tables.ref_table(48), &tables.ref_inv_table(48));
    std::map<int, std::vector<float>> own = {{4, {1.0F}}};
    FftTable::init_fft_table(4, own, false);
    EXPECT_EQ(own[4].size(), 1U) << "an existing table was replaced";
    for (const int n : {0, -1, -4}) {
        try {
            FftTable::init_fft_table(n, own, true);
            ADD_FAILURE() << n;
        } catch (const SorvoInvalidArgument& error) {
            EXPECT_STREQ(error.what(), "Invalid value of fft points.");
        }
        EXPECT_EQ(own.size(), 1U);
        EXPECT_FALSE(is_pow2(n));
    }
}

}  // namespace
