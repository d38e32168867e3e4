#pragma once

#include <cstddef>

#include "util/aligned_floats.h"

namespace sorvo::audio::kelpon::fft {

/// Working storage of the calling thread, at least float_n floats of any content. It stays valid
/// until the thread asks again and is freed with the thread.
float* thread_scratch(std::size_t float_n);

}  // namespace sorvo::audio::kelpon::fft
