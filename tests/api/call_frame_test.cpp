#include "api/call_frame.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace {

using namespace sorvo::audio;
using namespace sorvo::audio::api;

TEST(CallFrame, TurnsEveryExceptionIntoAStatus) {
    SorvoException other("other", -77);
    EXPECT_EQ(run([] {}), 0);
    EXPECT_EQ(run([] { throw SorvoInvalidArgument("bad"); }), -1);
    EXPECT_EQ(run([&] { throw other; }), -77);
    EXPECT_EQ(run([&] { throw &other; }), -77);
    EXPECT_EQ(run([] { throw std::bad_alloc(); }), -5);
    EXPECT_EQ(run([] { throw std::bad_array_new_length(); }), -5);
    EXPECT_EQ(run([] { throw std::invalid_argument("not of this library"); }), -128);
    EXPECT_EQ(run([] { throw 1; }), -128);
}

}  // namespace
