#pragma once

#include <vector>

#include "util/table_cache.h"

namespace sorvo::audio {

/// Process-wide cache of analysis windows. A window is built on its first request and never
/// changed, moved or removed afterwards, so references to it are read without a lock for the life
/// of the process.
///
/// With theta = 2 pi i / n (periodic: the value after the last sample equals the first):
///  - win_type 2, Hamming: 0.54 - 0.46 cos(theta)
///  - any other, Hann: 0.5 - 0.5 cos(theta)
class WindowTable {
  public:
    static WindowTable& instance();
    WindowTable(const WindowTable&) = delete;
    WindowTable& operator=(const WindowTable&) = delete;

    const std::vector<float>& ref_table(int window_n, int win_type);

  private:
    WindowTable() = default;
    static std::vector<float> init_window(int window_n, int win_type);

    TableCache<int, std::vector<float>> hann_{Cache::window};
    TableCache<int, std::vector<float>> hamming_{Cache::window};
};

}  // namespace sorvo::audio
