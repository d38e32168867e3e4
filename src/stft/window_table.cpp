#include "stft/window_table.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "math/functions.h"
#include "util/zeros.h"

namespace sorvo::audio {

WindowTable& WindowTable::instance() {
    static WindowTable table;
    static_assert(std::is_trivially_destructible_v<WindowTable>, "used during exit, too");
    return table;
}

std::vector<float> WindowTable::init_window(int window_n, int win_type) {
    auto window = make_zeros<float>(static_cast<std::uint64_t>(std::max(window_n, 0)));
    for (std::size_t i = 0; i < window.size(); ++i) {
        // The angle is formed in double and rounded once; everything after it is single precision.
        const auto theta = static_cast<float>(static_cast<double>(i) * 6.283185307179586 /
                                              static_cast<double>(window_n));
        const float c = math::cosf(theta);
        window[i] = win_type == 2 ? c * -0.46F + 0.54F : 0.5F - c * 0.5F;
    }
    return window;
}

const std::vector<float>& WindowTable::ref_table(int window_n, int win_type) {
    return (win_type == 2 ? hamming_ : hann_).ref(window_n, [&] {
        return init_window(window_n, win_type);
    });
}

}  // namespace sorvo::audio
