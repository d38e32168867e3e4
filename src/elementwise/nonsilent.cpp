#include "elementwise/nonsilent.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "math/functions.h"
#include "stft/framing.h"
#include "util/edge_extension.h"
#include "util/exceptions.h"
#include "util/float_to_int.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

constexpr double energy_floor = 1e-10;

/// Frames whose energies are summed side by side: each sum keeps its order, and none waits for the
/// additions of another.
constexpr std::size_t group_n = 8;

/// The mean squares of frame_n frames of win_n samples, each hop_n samples after the one before.
template <std::size_t frame_n>
void mean_squares(double* dst, const float* src, std::size_t hop_n, std::size_t win_n) {
    double energies[frame_n] = {};
    for (std::size_t i = 0; i < win_n; ++i) {
        for (std::size_t t = 0; t < frame_n; ++t) {
            const auto x = static_cast<double>(src[t * hop_n + i]);
            energies[t] += x * x;
        }
    }
    for (std::size_t t = 0; t < frame_n; ++t) {
        dst[t] = energies[t] / static_cast<double>(win_n);
    }
}

/// The mean squares of the frames of the signal, which is reflected at its ends.
std::vector<double> frame_mean_squares(const float* src, int sample_n, int win_n, int hop_n,
                                       int frame_n) {
    auto result = make_zeros<double>(static_cast<std::uint64_t>(frame_n));
    auto frame = make_zeros<float>(static_cast<std::uint64_t>(win_n));
    const auto hop = static_cast<std::size_t>(hop_n);
    for (std::size_t t = 0; t < result.size();) {
        const std::int64_t first = static_cast<std::int64_t>(t) * hop_n - win_n / 2;
        const std::int64_t group_end = first + std::int64_t{group_n - 1} * hop_n + win_n;
        if (t + group_n <= result.size() && first >= 0 && group_end <= sample_n) {
            mean_squares<group_n>(&result[t], src + first, hop, frame.size());
            t += group_n;
        } else {
            extract_segment(frame, src, sample_n, first, Extension::reflect);
            mean_squares<1>(&result[t], frame.data(), hop, frame.size());
            ++t;
        }
    }
    return result;
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
        std::vector<double> energies = frame_mean_squares(src, sample_n, win_n, hop_n, frame_n);
        double ref = energy_floor;
        for (double& energy : energies) {
            energy = std::max(energy, energy_floor);
            ref = std::max(ref, energy);
        }
        const double ref_db = 10.0 * math::log10(ref);
        const double threshold = -static_cast<double>(thr_db);
        for (std::size_t t = 0; t < energies.size(); ++t) {
            if (10.0 * math::log10(energies[t]) - ref_db > threshold) {
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
