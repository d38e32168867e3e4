// Filters that the tests run.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "support/random.h"

namespace sorvo::test {

struct Design {
    std::string name;
    std::vector<float> b;
    std::vector<float> a;

    int b_n() const { return static_cast<int>(b.size()); }
    int a_n() const { return static_cast<int>(a.size()); }
    std::size_t state_n() const { return std::max(b.size(), a.size()) - 1; }
};

inline void PrintTo(const Design& design, std::ostream* out) {
    *out << design.name;
}

/// Stable: the denominator is a product of sections whose poles lie within a radius of 0.8, times
/// a[0] = 2 or 0.5.
inline Design random_design(std::size_t b_n, std::size_t a_n) {
    Random random(static_cast<unsigned>(100 * b_n + a_n));
    std::vector<double> a = {b_n % 2 == 0 ? 2.0 : 0.5};
    while (a.size() < a_n) {
        const double radius = 0.8 * std::abs(double{random.value()});
        const bool pair = a_n - a.size() >= 2;
        const std::vector<double> section =
            pair ? std::vector<double>{1.0, -2.0 * radius * double{random.value()}, radius * radius}
                 : std::vector<double>{1.0, radius};
        std::vector<double> product(a.size() + section.size() - 1);
        for (std::size_t i = 0; i < a.size(); ++i) {
            for (std::size_t j = 0; j < section.size(); ++j) product[i + j] += a[i] * section[j];
        }
        a = product;
    }
    return {"b" + std::to_string(b_n) + "_a" + std::to_string(a_n),
            random.values(b_n),
            {a.begin(), a.end()}};
}

/// Every state size from 0 to 12, with either side longer.
inline std::vector<Design> designs() {
    std::vector<Design> all;
    for (std::size_t n = 1; n <= 13; ++n) all.push_back(random_design(n, n));
    for (std::size_t n : {2U, 3U, 6U, 10U}) {
        all.push_back(random_design(n, 1));
        all.push_back(random_design(1, n));
        all.push_back(random_design(n + 2, n));
    }
    return all;
}

}  // namespace sorvo::test
