#pragma once

namespace sorvo::test {

/// A sanitizer's operator new ends the process where memory cannot be had.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memory_can_be_refused = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool memory_can_be_refused = false;
#else
constexpr bool memory_can_be_refused = true;
#endif
#else
constexpr bool memory_can_be_refused = true;
#endif

}  // namespace sorvo::test
