// A program that loads the library while it runs and gives it back.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>

#include "robustness/child_process.h"

namespace sorvo::audio::test {
namespace {

// Tables live until the process ends, threads may be at work, and fork() has handlers to call: the
// library stays.
TEST(Unloading, LeavesTheLibraryAndItsTablesWhereTheyAre) {
    void* const library = ::dlopen(SORVO_TEST_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    using GetWindow = int (*)(float*, int, int);
    const auto get_window = reinterpret_cast<GetWindow>(::dlsym(library, "sorvoAudioGetWindow"));
    std::array<float, 50> first{};
    ASSERT_EQ(get_window(first.data(), 50, 1), 0);
    EXPECT_EQ(::dlclose(library), 0);

    void* const again = ::dlopen(SORVO_TEST_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(reinterpret_cast<GetWindow>(::dlsym(again, "sorvoAudioGetWindow")), get_window);
    EXPECT_EQ(run_in_child(20,
                           [&] {
                               std::array<float, 50> second{};
                               return get_window(second.data(), 50, 1) == 0 && second == first &&
                                      get_window(second.data(), 49, 1) == 0;
                           }),
              "");
}

}  // namespace
}  // namespace sorvo::audio::test
