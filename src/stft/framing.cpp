#include "stft/framing.h"

#include <cmath>

#include "util/edge_extension.h"
#include "util/float_to_int.h"

namespace sorvo::audio {

int get_frame_len(int sample_n, int fft_n, int hop_n, int center) {
    if (sample_n < fft_n) {
        return 0;
    }
    const auto hop = static_cast<float>(hop_n);
    // The centred modes count differently on purpose where the hop does not divide the length.
    switch (center) {
        case 1:
            return truncate_to_int(::floorf(static_cast<float>(sample_n) / hop + 1.0F));
        case 2:
            return truncate_to_int(::ceilf(static_cast<float>(sample_n) / hop) + 1.0F);
        default:
            return truncate_to_int(::floorf(static_cast<float>(sample_n - fft_n) / hop + 1.0F));
    }
}

void extract_frame(std::vector<float>& frame, const float* src, int sample_n, std::int64_t t,
                   int hop_n, int center) {
    const auto half = static_cast<std::int64_t>(frame.size() / 2);
    extract_segment(frame, src, sample_n, t * hop_n - (center == 0 ? 0 : half),
                    center == 1 ? Extension::reflect : Extension::zeros);
}

}  // namespace sorvo::audio
