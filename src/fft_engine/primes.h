#pragma once

#include <vector>

namespace sorvo::audio::kelpon::fft {

/// Sieve of Eratosthenes: entry i tells whether i is prime, for i from 0 to n.
std::vector<bool> sieve_primes(unsigned n);

/// The prime factors of n in rising order, each as often as it divides n; none for 1.
std::vector<unsigned> prime_factors(unsigned n);

inline bool is_power_of_two(unsigned n) {
    return n != 0 && (n & (n - 1)) == 0;
}

}  // namespace sorvo::audio::kelpon::fft
