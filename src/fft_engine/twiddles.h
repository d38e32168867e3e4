#pragma once

#include <complex>
#include <cstdint>
#include <vector>

namespace sorvo::audio::kelpon::fft {

enum class Direction { forward, inverse };
enum class TableLength { half, full };

/// exp(-2 pi i k / n) forward, exp(+2 pi i k / n) inverse, for k below n: exact on the axes,
/// elsewhere a series in double on an angle that was formed in float. No library trigonometry: the
/// tables are the same on every platform.
std::complex<float> calc_w_entry(std::uint64_t k, std::uint64_t n, Direction direction);

/// Entries 0 to n - 1 (full) or n / 2 - 1 (half).
std::vector<std::complex<float>> calcW(unsigned n, Direction direction = Direction::forward,
                                       TableLength length = TableLength::full);

/// The chirp exp(-pi i k^2 / n) of Bluestein's algorithm for k below n. The angle's index k^2 is
/// taken modulo its period 2n: unreduced it leads the series to angles where it has no correct
/// digit left.
std::vector<std::complex<float>> calc_chirp(unsigned n);

}  // namespace sorvo::audio::kelpon::fft
