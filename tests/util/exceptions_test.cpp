#include "util/exceptions.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using sorvo::Util::Exceptions::SorvoException;
using sorvo::Util::Exceptions::SorvoInvalidArgument;

TEST(Exceptions, LayerInformationIsSetOnceAndShownEverywhere) {
    SorvoInvalidArgument error("Invalid fft_n value.");
    EXPECT_STREQ(error.what(), "Invalid fft_n value.");
    EXPECT_STREQ(error.errorDetail(), "Invalid fft_n value.");
    error.setLayerInfo("encoder", "mel");
    error.setLayerInfo("outer", "ignored");
    EXPECT_EQ(error.getLayerInfo(), "encoder(mel)");
    EXPECT_STREQ(error.what(), "Layer:encoder(mel) Error:Invalid fft_n value.");
    EXPECT_STREQ(error.errorDetail(), "Layer:encoder(mel) Error:Invalid fft_n value.");
    EXPECT_EQ(error.errorCode(), -1);
}

TEST(Exceptions, IsCaughtThroughBothOfItsBases) {
    const auto thrower = [] { throw SorvoInvalidArgument("text"); };
    EXPECT_THROW(thrower(), std::invalid_argument);
    EXPECT_THROW(thrower(), SorvoException);
    try {
        thrower();
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "text");
    }
    EXPECT_THROW(SorvoInvalidArgument(nullptr), std::logic_error);
}

TEST(Exceptions, CarriesAnyCode) {
    const SorvoException error("out of range", -77);
    EXPECT_EQ(error.errorCode(), -77);
    EXPECT_STREQ(error.errorDetail(), "out of range");
}

}  // namespace
