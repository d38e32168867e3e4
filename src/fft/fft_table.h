#pragma once

#include <map>
#include <vector>

#include "util/table_cache.h"

namespace sorvo::audio {

/// True for 1, 2, 4, 8, ...; false for 0 and all negative numbers.
bool is_pow2(int n);

/// Process-wide cache of twiddle factors, one table per transform size and direction. A table is
/// built on its first request and never changed, moved or removed afterwards, so references to it
/// are read without a lock for the life of the process.
///
/// With theta(j) = -2 pi j / n (forward) or +2 pi j / n (inverse), rounded to float once:
///  - n a power of two: n / 4 groups of 12 floats, the three twiddles of one radix-4 butterfly,
///    each expanded into the rows of a complex multiplication. Group k holds (c, s, -s, c) of
///    theta(2k), (c, s, -s, c) of theta(k) and, in another order, (-s, c, c, s) of theta(3k). The
///    vector has 3 n elements; those of n = 1 and 2 are zeros.
///  - any other n: the n roots (cos theta(j), sin theta(j)), interleaved.
class FftTable {
  public:
    static FftTable& instance();
    FftTable(const FftTable&) = delete;
    FftTable& operator=(const FftTable&) = delete;

    /// The forward table of size n; throws SorvoInvalidArgument for n <= 0.
    const std::vector<float>& ref_table(int n);
    /// The inverse table of size n; throws SorvoInvalidArgument for n <= 0.
    const std::vector<float>& ref_inv_table(int n);

    /// Builds the table for n into `tables` unless it is there. A table becomes visible only when
    /// it is complete: after a failure `tables` is as it was.
    static void init_fft_table(int n, std::map<int, std::vector<float>>& tables, bool inverse);

  private:
    FftTable() = default;
    TableCache<int, std::vector<float>> forward_{Cache::fft};
    TableCache<int, std::vector<float>> inverse_{Cache::fft};
};

}  // namespace sorvo::audio
