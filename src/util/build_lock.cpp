#include "util/build_lock.h"

#if defined(__unix__) || defined(__APPLE__)
#include <pthread.h>
#define SORVO_AUDIO_HAS_FORK 1
#endif

#include <array>
#include <cstddef>
#include <type_traits>

namespace sorvo::audio {
namespace {

using Mutexes = std::array<std::mutex, static_cast<std::size_t>(Cache::resample) + 1>;
static_assert(std::is_trivially_destructible_v<Mutexes>, "tables are built during exit, too");
Mutexes mutexes;

#ifdef SORVO_AUDIO_HAS_FORK

// No thread holds two of the locks but the one that forks, which takes all of them in this order.
void lock_all() {
    for (std::mutex& mutex : mutexes) {
        mutex.lock();
    }
}

void unlock_all() {
    for (std::mutex& mutex : mutexes) {
        mutex.unlock();
    }
}

// When the library is loaded. Where no memory is left even for this, forking is as it would be
// without it.
[[maybe_unused]] const int registered = ::pthread_atfork(lock_all, unlock_all, unlock_all);

#endif

}  // namespace

bool call_in_forked_child(void (*function)()) {
#ifdef SORVO_AUDIO_HAS_FORK
    return ::pthread_atfork(nullptr, nullptr, function) == 0;
#else
    (void)function;
    return false;
#endif
}

BuildLock::BuildLock(Cache cache) : lock_(mutexes[static_cast<std::size_t>(cache)]) {}

}  // namespace sorvo::audio
