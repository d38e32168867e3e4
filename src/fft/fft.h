// The discrete Fourier transform of any length n >= 1 in single precision, in place on interleaved
// complex data (element j at floats 2j and 2j + 1). Forward is unscaled, inverse divides by n:
//   forward X[k] = sum over j of x[j] e^(-2 pi i j k / n)
//   inverse x[j] = 1/n sum over k of X[k] e^(+2 pi i j k / n)
//
// `table` is what FftTable::ref_table(n) (forward) or ref_inv_table(n) (inverse) returned for the
// same n. Vector sizes are the caller's responsibility.
#pragma once

#include <cstddef>
#include <vector>

namespace sorvo::audio {

/// Loads n real samples as complex numbers: dst[2i] = src[i], dst[2i + 1] = 0.
void fft_pre_process(std::vector<float>& dst, const float* src, int n);

void fft(std::vector<float>& data, int n, const std::vector<float>& table);
void ifft(std::vector<float>& data, int n, const std::vector<float>& table);

/// Powers of two: radix-4 decimation in frequency, a radix-2 pass where log2(n) is odd, bit
/// reversal.
void fft_pow2(std::vector<float>& data, int n, const std::vector<float>& table);
void ifft_pow2(std::vector<float>& data, int n, const std::vector<float>& table);

/// The butterflies of column `start` of all blocks of length `span` = 4 `quarter`; the twiddles are
/// those of the table group at float offset `twiddleOffset`.
void fft_pow2_core(std::vector<float>& data, int n, int start, int span, int quarter,
                   const std::vector<float>& table, int twiddleOffset);
void ifft_pow2_core(std::vector<float>& data, int n, int start, int span, int quarter,
                    const std::vector<float>& table, int twiddleOffset);

/// The radix-2 pass, without twiddles: adjacent pairs become their sum and difference.
void fft_pow2_merge(std::vector<float>& data, int n);

/// Any length, in the direction of the table and without scaling: mixed radix by direct summation,
/// so quadratic in the largest prime factor.
void fft_general(std::vector<float>& data, int n, const std::vector<float>& table);

/// The factors by which fft_general divides n, in this order: smallest first, each leaving a
/// cofactor at least as large. What remains is the length of the direct transforms.
std::vector<std::size_t> fft_factors(std::size_t n);

/// Direct transforms of `blocks` consecutive blocks of n / blocks elements.
void dft_sub(std::vector<float>& data, int n, int blocks, const std::vector<float>& table);

}  // namespace sorvo::audio
