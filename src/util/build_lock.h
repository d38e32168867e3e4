#pragma once

#include <mutex>

namespace sorvo::audio {

/// The caches of tables and plans.
enum class Cache { fft, plan, window, mel, resample };

/// Held while a table of the cache is built. Every cache has a lock of its own.
///
/// A process that forks has whatever its other threads were at in the child, without these threads
/// to finish it. So fork() waits for builders, and both processes go on with every lock free. A
/// process that is made in another way (vfork, posix_spawn) runs no code of the library before it
/// runs another program.
class BuildLock {
  public:
    explicit BuildLock(Cache cache);

  private:
    std::lock_guard<std::mutex> lock_;
};

/// Whether fork() will call `function` in the child, whose only thread is the one that forked.
bool call_in_forked_child(void (*function)());

}  // namespace sorvo::audio
