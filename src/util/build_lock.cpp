#include "util/build_lock.h"

#if defined(__unix__) || defined(__APPLE__)
#include <pthread.h>
#define SORVO_AUDIO_HAS_FORK 1
#endif

#include <array>
#include <cstddef>
#include <new>

namespace sorvo::audio {
namespace {

using Mutexes = std::array<std::mutex, static_cast<std::size_t>(Cache::resample) + 1>;

/// Constructed by the first use, which may be before main(), and never destroyed: tables are built
/// during exit, too.
Mutexes& mutexes() {
    alignas(Mutexes) static std::byte storage[sizeof(Mutexes)];
    static Mutexes* const all = new (storage) Mutexes;
    return *all;
}

#ifdef SORVO_AUDIO_HAS_FORK

// No thread holds two of the locks but the one that forks, which takes all of them in this order.
void lock_all() {
    for (std::mutex& mutex : mutexes()) {
        mutex.lock();
    }
}

void unlock_all() {
    for (std::mutex& mutex : mutexes()) {
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

BuildLock::BuildLock(Cache cache) : lock_(mutexes()[static_cast<std::size_t>(cache)]) {}

}  // namespace sorvo::audio
