#include "stft/window_table.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "util/zeros.h"

namespace sorvo::audio {

WindowTable& WindowTable::instance() {
    static WindowTable table;
    return table;
}

void WindowTable::init_window(int window_n, int win_type) {
    if (windows(win_type).count(window_n) != 0) {
        return;
    }
    auto window = make_zeros<float>(static_cast<std::uint64_t>(std::max(window_n, 0)));
    for (std::size_t i = 0; i < window.size(); ++i) {
        // The angle is formed in double and rounded once; everything after it is single precision.
        const auto theta = static_cast<float>(static_cast<double>(i) * 6.283185307179586 /
                                              static_cast<double>(window_n));
        const float c = ::cosf(theta);
        window[i] = win_type == 2 ? c * -0.46F + 0.54F : 0.5F - c * 0.5F;
    }
    windows(win_type).emplace(window_n, std::move(window));
}

const std::vector<float>& WindowTable::ref_table(int window_n, int win_type) {
    const std::lock_guard<std::mutex> lock(mutex_);
    init_window(window_n, win_type);
    return windows(win_type).find(window_n)->second;
}

}  // namespace sorvo::audio
