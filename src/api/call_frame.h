// What every exported function has in common: null checks, argument checks, and the conversion of
// exceptions into status codes.
#pragma once

#include <initializer_list>
#include <new>

#include "sorvo_audio.h"
#include "util/exceptions.h"

namespace sorvo::audio::api {

/// Null checks come before every other check and touch no buffer.
template <class... Pointers>
bool any_null(const Pointers*... pointers) {
    return ((pointers == nullptr) || ...);
}

/// Throws SorvoInvalidArgument with this message unless the condition holds. Messages are fixed;
/// some name another parameter or another ending than one would expect.
inline void require(bool condition, const char* message) {
    if (!condition) {
        throw SorvoInvalidArgument(message);
    }
}

inline bool is_one_of(int value, std::initializer_list<int> accepted) {
    for (const int a : accepted) {
        if (value == a) {
            return true;
        }
    }
    return false;
}

/// Runs the checks and the work of one call. No exception leaves it.
template <class Work>
int run(Work work) noexcept {
    try {
        work();
    } catch (const std::bad_alloc&) {
        return SORVO_AUDIO_ERROR_MEMORY;
    } catch (const SorvoException& error) {
        return error.errorCode();
    } catch (const SorvoException* error) {
        return error->errorCode();
    } catch (...) {
        return SORVO_AUDIO_ERROR_INTERNAL;
    }
    return SORVO_AUDIO_OK;
}

}  // namespace sorvo::audio::api
