#include "fft_engine/primes.h"

#include <cstddef>
#include <cstdint>

namespace sorvo::audio::kelpon::fft {

std::vector<bool> sieve_primes(unsigned n) {
    std::vector<bool> is_prime(std::size_t{n} + 1, true);
    is_prime[0] = false;
    if (n >= 1) is_prime[1] = false;
    for (std::uint64_t i = 2; i * i <= n; ++i) {
        if (!is_prime[static_cast<std::size_t>(i)]) continue;
        for (std::uint64_t multiple = 2 * i; multiple <= n; multiple += i) {
            is_prime[static_cast<std::size_t>(multiple)] = false;
        }
    }
    return is_prime;
}

std::vector<unsigned> prime_factors(unsigned n) {
    std::vector<unsigned> factors;
    unsigned root = 1;
    while (std::uint64_t{root + 1} * (root + 1) <= n) ++root;
    const std::vector<bool> is_prime = sieve_primes(root);
    for (unsigned p = 2; p <= root; ++p) {
        for (; is_prime[p] && n % p == 0; n /= p) factors.push_back(p);
    }
    if (n > 1) factors.push_back(n);
    return factors;
}

}  // namespace sorvo::audio::kelpon::fft
