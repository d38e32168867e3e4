#pragma once

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SORVO_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SORVO_TEST_SANITIZED 1
#endif
#endif

namespace sorvo::audio::test {

/// Allows the process `bytes` of address space more than it has now. Sanitizers reserve address
/// space for themselves, so their builds go without a limit.
inline void limit_memory(std::size_t bytes) {
#ifndef SORVO_TEST_SANITIZED
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t limit = pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) + bytes;
    const rlimit limits = {limit, limit};
    ::setrlimit(RLIMIT_AS, &limits);
#else
    (void)bytes;
#endif
}

/// Runs the body in a process of its own for at most `seconds` and says how it ended: "" for a body
/// that returned true.
inline std::string run_in_child(unsigned seconds, const std::function<bool()>& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(seconds);
        ::_exit(body() ? 0 : 1);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) {
        return "no child process";
    }
    if (WIFSIGNALED(status)) {
        return "ended by signal " + std::to_string(WTERMSIG(status));
    }
    return WEXITSTATUS(status) == 0 ? "" : "exit code " + std::to_string(WEXITSTATUS(status));
}

}  // namespace sorvo::audio::test
