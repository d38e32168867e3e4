// Threads whose floating-point arithmetic is not in the default mode: what they get is not
// promised, but the tables that they build are everybody's.
#include <gtest/gtest.h>
#include <sorvo_audio.h>

#include <array>
#include <cfenv>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

#include "robustness/child_process.h"
#include "robustness/sample_calls.h"

namespace sorvo::audio::test {
namespace {

constexpr unsigned patience_s = 20;

void call_everything() {
    for (const SampleCall& call : sample_calls()) {
        int status = 0;
        call.run(
            0, [](const std::function<int()>& work) { return work(); }, status);
    }
}

struct Mode {
    std::string name;
    void (*set)();
};

std::vector<Mode> modes() {
    std::vector<Mode> all = {{"upward", [] { std::fesetround(FE_UPWARD); }},
                             {"downward", [] { std::fesetround(FE_DOWNWARD); }},
                             {"towards zero", [] { std::fesetround(FE_TOWARDZERO); }}};
#if defined(__x86_64__)
    all.push_back({"no denormals", [] { ::_mm_setcsr(::_mm_getcsr() | 0x8040U); }});
#endif
#if defined(__GLIBC__)
    all.push_back({"traps", [] { ::feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW); }});
#endif
    return all;
}

/// What the mode is, without the flags of what has happened.
std::vector<int> state() {
    std::vector<int> state = {std::fegetround()};
#if defined(__x86_64__)
    state.push_back(static_cast<int>(::_mm_getcsr() & ~0x3FU));
#endif
#if defined(__GLIBC__)
    state.push_back(::fegetexcept());
#endif
    return state;
}

/// The bits of every sample call in the default mode, in a process that has first made them in this
/// mode.
std::vector<float> outputs_after(const Mode& mode) {
    constexpr std::size_t most = std::size_t{1} << 20U;
    auto* const shared = static_cast<float*>(::mmap(
        nullptr, most * sizeof(float), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    EXPECT_EQ(run_in_child(patience_s,
                           [&] {
                               mode.set();
                               const std::vector<int> before = state();
                               call_everything();
                               const bool kept = state() == before;
                               std::fesetenv(FE_DFL_ENV);
                               std::size_t n = 1;
                               for (const SampleCall& call : sample_calls()) {
                                   const std::vector<float> out = outputs_of(call, 0);
                                   std::memcpy(shared + n, out.data(), out.size() * sizeof(float));
                                   n += out.size();
                               }
                               shared[0] = static_cast<float>(n);
                               return kept && n < most && !::testing::Test::HasFailure();
                           }),
              "")
        << mode.name;
    std::vector<float> outputs(shared, shared + static_cast<std::size_t>(shared[0]));
    ::munmap(shared, most * sizeof(float));
    return outputs;
}

TEST(FloatMode, OfAThreadThatBuildsTablesLeavesThemAsTheyAre) {
    const std::vector<float> expected = outputs_after({"default", [] {}});
    ASSERT_GT(expected.size(), 1000U);
    for (const Mode& mode : modes()) {
        const std::vector<float> outputs = outputs_after(mode);
        EXPECT_TRUE(outputs.size() == expected.size() &&
                    std::memcmp(outputs.data(), expected.data(), outputs.size() * sizeof(float)) ==
                        0)
            << mode.name;
    }
}

#if defined(__GLIBC__)
TEST(FloatMode, WithEveryTrapDoesNotTrapInTables) {
    EXPECT_EQ(run_in_child(patience_s,
                           [] {
                               std::array<float, 200> out{};
                               ::feenableexcept(FE_ALL_EXCEPT);
                               return sorvoAudioGetWindow(out.data(), 100,
                                                          SORVO_AUDIO_WINDOW_HANN) ==
                                          SORVO_AUDIO_OK &&
                                      sorvoAudioGetFBMatrix(out.data(), 20, 0.0F, 4000.0F, 8, 8000,
                                                            1, 0) == SORVO_AUDIO_OK;
                           }),
              "");
}
#endif

}  // namespace
}  // namespace sorvo::audio::test
