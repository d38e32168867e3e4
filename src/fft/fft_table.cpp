#include "fft/fft_table.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "math/functions.h"
#include "util/exceptions.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

constexpr double pi = 3.141592653589793;

struct Root {
    float cos;
    float sin;
};

/// Roots of unity of one size and direction. The angle is formed in double and rounded once; sine
/// and cosine are single precision. Forward angle 0 is -0, so its sine is -0.
class Roots {
  public:
    Roots(int n, bool inverse)
        : step_(static_cast<double>(inverse ? 2.0F : -2.0F) * pi / static_cast<double>(n)) {}

    Root operator()(std::size_t j) const {
        const auto angle = static_cast<float>(static_cast<double>(j) * step_);
        return {math::cosf(angle), math::sinf(angle)};
    }

  private:
    double step_;
};

std::vector<float> grouped_table(std::size_t n, const Roots& root) {
    auto table = make_zeros<float>(3 * n);
    for (std::size_t k = 0; k < n / 4; ++k) {
        const Root w1 = root(k);
        const Root w2 = root(2 * k);
        const Root w3 = root(3 * k);
        const float group[12] = {w2.cos,  w2.sin, -w2.sin, w2.cos, w1.cos, w1.sin,
                                 -w1.sin, w1.cos, -w3.sin, w3.cos, w3.cos, w3.sin};
        for (std::size_t i = 0; i < 12; ++i) {
            table[12 * k + i] = group[i];
        }
    }
    return table;
}

std::vector<float> plain_table(std::size_t n, const Roots& root) {
    auto table = make_zeros<float>(2 * n);
    for (std::size_t j = 0; j < n; ++j) {
        const Root w = root(j);
        table[2 * j] = w.cos;
        table[2 * j + 1] = w.sin;
    }
    return table;
}

const std::vector<float>& ref_table_of(int n, TableCache<int, std::vector<float>>& tables,
                                       bool inverse) {
    return tables.ref(n, [&] {
        std::map<int, std::vector<float>> built;
        FftTable::init_fft_table(n, built, inverse);
        return std::move(built.begin()->second);
    });
}

}  // namespace

bool is_pow2(int n) {
    return n > 0 && (n & (n - 1)) == 0;
}

FftTable& FftTable::instance() {
    static FftTable table;
    static_assert(std::is_trivially_destructible_v<FftTable>, "used during exit, too");
    return table;
}

void FftTable::init_fft_table(int n, std::map<int, std::vector<float>>& tables, bool inverse) {
    if (n <= 0) {
        throw SorvoInvalidArgument("Invalid value of fft points.");
    }
    if (tables.count(n) != 0) {
        return;
    }
    const Roots root(n, inverse);
    const auto size = static_cast<std::size_t>(n);
    tables.emplace(n, is_pow2(n) ? grouped_table(size, root) : plain_table(size, root));
}

const std::vector<float>& FftTable::ref_table(int n) {
    return ref_table_of(n, forward_, false);
}

const std::vector<float>& FftTable::ref_inv_table(int n) {
    return ref_table_of(n, inverse_, true);
}

}  // namespace sorvo::audio
