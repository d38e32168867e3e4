#include "fft_engine/twiddles.h"

#include <cmath>

namespace sorvo::audio::kelpon::fft {
namespace {

double taylor_sine(double y) {
    constexpr double negligible = 1.1920928955078125e-7;
    double term = y;
    double sum = y;
    for (int i = 2; std::fabs(term) >= negligible; i += 2) {
        term *= -(y * y) / ((i + 1) * i);
        sum += term;
    }
    return sum;
}

}  // namespace

std::complex<float> calc_w_entry(std::uint64_t k, std::uint64_t n, Direction direction) {
    const float sign = direction == Direction::forward ? -1.0F : 1.0F;
    const float zero = direction == Direction::forward ? 0.0F : -0.0F;
    if (k == 0) return {1.0F, zero};
    if (2 * k == n) return {-1.0F, zero};
    if (4 * k == n) return {0.0F, sign};
    if (4 * k == 3 * n) return {0.0F, -sign};

    constexpr double half_pi = 1.5707963267948966;
    const auto index = static_cast<float>(k);
    const auto length = static_cast<float>(n);
    const float cosine_angle = index * -6.2831855F / length;
    const float sine_angle = index * 6.2831855F / length;
    const auto cosine =
        static_cast<float>(taylor_sine(static_cast<double>(cosine_angle) + half_pi));
    const auto sine = static_cast<float>(taylor_sine(static_cast<double>(sine_angle)));
    return {cosine, direction == Direction::forward ? -sine : sine};
}

std::vector<std::complex<float>> calcW(unsigned n, Direction direction, TableLength length) {
    std::vector<std::complex<float>> table(length == TableLength::full ? n : n / 2);
    for (std::size_t k = 0; k < table.size(); ++k) table[k] = calc_w_entry(k, n, direction);
    return table;
}

std::vector<std::complex<float>> calc_chirp(unsigned n) {
    std::vector<std::complex<float>> chirp(n);
    const std::uint64_t period = 2 * std::uint64_t{n};
    for (std::uint64_t k = 0; k < n; ++k) {
        chirp[static_cast<std::size_t>(k)] =
            calc_w_entry(k * k % period, period, Direction::forward);
    }
    return chirp;
}

}  // namespace sorvo::audio::kelpon::fft
