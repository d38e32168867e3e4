#pragma once

#include <complex>
#include <cstddef>
#include <random>
#include <vector>

namespace sorvo_test {

using Signal = std::vector<std::complex<float>>;
using Exact = std::complex<long double>;

/// exp(sign * 2 pi i k / n) for k below n.
inline std::vector<Exact> exact_roots(std::size_t n, int sign) {
    const long double pi = 3.141592653589793238462643383279502884L;
    std::vector<Exact> roots(n);
    for (std::size_t k = 0; k < n; ++k) {
        const long double angle =
            2 * pi * static_cast<long double>(k) / static_cast<long double>(n);
        roots[k] = std::polar(1.0L, sign * angle);
    }
    return roots;
}

template <class Value>
Exact to_exact(const Value& value) {
    return Exact(std::complex<float>(value));
}
inline Exact to_exact(const Exact& value) {
    return value;
}

/// One output of the transform by its definition, not scaled.
template <class In>
Exact exact_bin(const std::vector<In>& in, const std::vector<Exact>& roots, std::size_t k) {
    Exact sum = 0;
    std::size_t angle = 0;
    for (const In& value : in) {
        sum += to_exact(value) * roots[angle];
        angle += k;
        if (angle >= roots.size()) angle -= roots.size();
    }
    return sum;
}

template <class In>
std::vector<Exact> exact_dft(const std::vector<In>& in, int sign) {
    const std::vector<Exact> roots = exact_roots(in.size(), sign);
    std::vector<Exact> out(in.size());
    for (std::size_t k = 0; k < in.size(); ++k) out[k] = exact_bin(in, roots, k);
    return out;
}

/// Relative error in the L2 norm.
template <class Expected>
double relative_error(const Signal& actual, const std::vector<Expected>& expected) {
    long double error = 0;
    long double norm = 0;
    for (std::size_t k = 0; k < actual.size(); ++k) {
        error += std::norm(to_exact(actual[k]) - to_exact(expected[k]));
        norm += std::norm(to_exact(expected[k]));
    }
    return static_cast<double>(std::sqrt(error / norm));
}

inline Signal random_signal(std::size_t n) {
    std::mt19937 generator(static_cast<unsigned>(n));
    std::normal_distribution<float> normal;
    Signal signal(n);
    for (auto& value : signal) value = {normal(generator), normal(generator)};
    return signal;
}

inline std::vector<float> real_parts(const Signal& signal) {
    std::vector<float> parts;
    for (const auto& value : signal) parts.push_back(value.real());
    return parts;
}

/// The imaginary parts in steps of 1/4000.
inline std::vector<short> short_parts(const Signal& signal) {
    std::vector<short> parts;
    for (const auto& value : signal) parts.push_back(static_cast<short>(value.imag() * 4000.0F));
    return parts;
}

}  // namespace sorvo_test
