// Ways to compare results: by bits, by relative L2 distance, by units in the last place.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace sorvo::test {

template <class T>
auto bits_of(T x) {
    std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t> bits{};
    static_assert(sizeof(bits) == sizeof(x));
    std::memcpy(&bits, &x, sizeof(x));
    return bits;
}

/// Equal bits; any NaN equals any other.
template <class A, class B>
testing::AssertionResult same_bits(const A& actual, const B& expected) {
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure() << actual.size() << " elements, not " << expected.size();
    }
    for (std::size_t i = 0; i < actual.size(); ++i) {
        const bool both_nan = std::isnan(actual[i]) && std::isnan(expected[i]);
        if (!both_nan && bits_of(actual[i]) != bits_of(expected[i])) {
            return testing::AssertionFailure() << "element " << i << " of " << actual.size() << ": "
                                               << actual[i] << ", not " << expected[i];
        }
    }
    return testing::AssertionSuccess();
}

/// ||actual - expected|| / ||expected||, and infinity where the sizes differ. Elements may be real
/// or std::complex<long double>.
template <class A, class B>
double relative_l2(const A& actual, const B& expected) {
    long double difference = 0;
    long double size = 0;
    for (std::size_t i = 0; i < expected.size() && i < actual.size(); ++i) {
        using Wide = std::decay_t<decltype(expected[i])>;
        difference += std::norm(static_cast<Wide>(actual[i]) - expected[i]);
        size += std::norm(expected[i]);
    }
    if (actual.size() != expected.size()) return HUGE_VAL;
    return static_cast<double>(std::sqrt(difference / (size > 0 ? size : 1)));
}

/// |actual - expected| in units of the last place of the float next to `expected`.
inline double ulp_error(float actual, long double expected) {
    const float magnitude = std::fabs(static_cast<float>(expected));
    const float ulp = std::nextafterf(magnitude, HUGE_VALF) - magnitude;
    return static_cast<double>(std::fabs(static_cast<long double>(actual) - expected) / ulp);
}

}  // namespace sorvo::test
