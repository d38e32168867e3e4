#include "mel/mel_scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

#include "support/compare.h"
#include "support/reference.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;

TEST(MelScale, FollowsItsFormulaBothWays) {
    for (float hz = 0.0F; hz < 30000.0F; hz = hz * 1.01F + 0.3F) {
        SCOPED_TRACE(hz);
        EXPECT_LT(ulp_error(hz_to_mel_slaney(hz), reference::hz_to_mel(hz, false)), 2.0);
        // Two ulp of the largest values; small frequencies are lost beside the 1 that is added to
        // them.
        EXPECT_NEAR(hz_to_mel_htk(hz), static_cast<double>(reference::hz_to_mel(hz, true)), 5e-4);
        // On the way back an exponent was rounded, which the exponential magnifies. Measured:
        // 8.1e-7 and 1.8e-7.
        const float mel = hz / 200.0F;
        const auto slaney = static_cast<double>(reference::mel_to_hz(mel, false));
        EXPECT_NEAR(mel_to_hz_slaney(mel), slaney, 1e-6 * slaney);
        const auto htk = static_cast<double>(reference::mel_to_hz(hz / 8.0F, true));
        EXPECT_NEAR(mel_to_hz_htk(hz / 8.0F), htk, 2.5e-7 * (htk + 700.0));
    }
}

// Models depend on these to the bit: the way up adds exactly 15, the way down subtracts the float
// just above.
TEST(MelScale, SwitchesBranchesWhereItShould) {
    EXPECT_EQ(hz_to_mel_slaney(1000.0F), 15.0F);
    EXPECT_LT(hz_to_mel_slaney(std::nextafter(1000.0F, 0.0F)), 15.0F);
    EXPECT_EQ(mel_to_hz_slaney(15.0F), 15.0F * 66.66666412353516F);
    EXPECT_EQ(mel_to_hz_slaney(std::nextafter(15.0F, 16.0F)), 1000.0F);
    EXPECT_EQ(bits_of(mel_to_hz_slaney(-0.0F)), 0U);
    EXPECT_EQ(bits_of(hz_to_mel_htk(-0.0F)), 0U);
    for (const auto scale : {hz_to_mel_slaney, mel_to_hz_slaney, hz_to_mel_htk, mel_to_hz_htk}) {
        EXPECT_TRUE(std::isnan(scale(std::nanf(""))));
    }
}

}  // namespace
