#include "elementwise/nonsilent.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "stft/framing.h"
#include "util/exceptions.h"
#include "util/float_to_int.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

constexpr double energy_floor = 1e-10;

double mean_square(const std::vector<float>& frame) {
    double energy = 0.0;
    for (const float x : frame) {
        energy += static_cast<double>(x) * static_cast<double>(x);
    }
    return energy / static_cast<double>(frame.size());
}

}  // namespace

void detect_nonsilent_pos(int* pos, int* len, const float* src, int sample_n, int win_n, int hop_n,
                          float thr_db) {
    if (thr_db < 0.0F) {
        throw SorvoInvalidArgument("Invalid thr_db.");
    }
    const int frame_n = get_frame_len(sample_n, win_n, hop_n, 1);
    std::int64_t first = -1;
    std::int64_t last = -1;
    if (frame_n > 0) {
        auto frame = make_zeros<float>(static_cast<std::uint64_t>(win_n));
        auto energies = make_zeros<double>(static_cast<std::uint64_t>(frame_n));
        double ref = energy_floor;
        for (std::size_t t = 0; t < energies.size(); ++t) {
            extract_segment(frame, src, sample_n, static_cast<std::int64_t>(t) * hop_n - win_n / 2,
                            Extension::reflect);
            energies[t] = std::max(mean_square(frame), energy_floor);
            ref = std::max(ref, energies[t]);
        }
        const double ref_db = 10.0 * ::log10(ref);
        const double threshold = -static_cast<double>(thr_db);
        for (std::size_t t = 0; t < energies.size(); ++t) {
            if (10.0 * ::log10(energies[t]) - ref_db > threshold) {
                first = first < 0 ? static_cast<std::int64_t>(t) : first;
                last = static_cast<std::int64_t>(t);
            }
        }
    }
    if (first < 0) {
        *pos = -1;
        *len = 0;
        return;
    }
    const std::int64_t begin = first * hop_n;
    const std::int64_t end = std::min<std::int64_t>(sample_n, (last + 1) * hop_n);
    const int begin_int = length_to_int(begin);
    *len = length_to_int(end - begin);
    *pos = begin_int;
}

}  // namespace sorvo::audio
