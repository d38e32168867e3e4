#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fft/fft.h"
#include "fft/fft_table.h"
#include "sorvo_audio.h"
#include "support/compare.h"
#include "support/random.h"
#include "support/reference.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::test;
using reference::Complexes;

std::vector<float> forward(std::vector<float> data) {
    const int n = static_cast<int>(data.size() / 2);
    fft(data, n, FftTable::instance().ref_table(n));
    return data;
}

std::vector<float> inverse(std::vector<float> data) {
    const int n = static_cast<int>(data.size() / 2);
    ifft(data, n, FftTable::instance().ref_inv_table(n));
    return data;
}

Complexes complex_values(const std::vector<float>& data) {
    Complexes result(data.size() / 2);
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = {data[2 * i], data[2 * i + 1]};
    }
    return result;
}

/// Relative L2 error to expect. A power of two adds up products in log2(n) steps; other lengths
/// make a step of direct sums of d terms for every prime factor d. Measured over these lengths: at
/// most 4.2e-8 sqrt(1 + log2 n) for powers of two, 0.82 of the bound for the others.
double error_bound(int n) {
    if (is_pow2(n)) return 6e-8 * std::sqrt(1 + std::log2(n));
    double square = 0.0;
    for (int d = 2; n > 1; ++d) {
        for (; n % d == 0; n /= d) square += 1.6e-7 * 1.6e-7 + d * 2.8e-8 * 2.8e-8;
    }
    return std::sqrt(square);
}

class Transform : public testing::TestWithParam<int> {
  protected:
    const std::size_t n_ = static_cast<std::size_t>(GetParam());
    const double bound_ = error_bound(GetParam());
    Random random_{static_cast<unsigned>(GetParam())};
};

TEST_P(Transform, MatchesTheDefinition) {
    const std::vector<float> x = random_.values(2 * n_);
    const Complexes wide = complex_values(x);
    EXPECT_LT(relative_l2(complex_values(forward(x)), reference::dft(wide, -1)), bound_);
    EXPECT_LT(relative_l2(complex_values(inverse(x)), reference::dft(wide, +1)), bound_);
}

TEST_P(Transform, IsInvertedByTheInverse) {
    const std::vector<float> x = random_.values(2 * n_);
    EXPECT_LT(relative_l2(inverse(forward(x)), x), 2 * bound_);
    EXPECT_LT(relative_l2(forward(inverse(x)), x), 2 * bound_);
}

TEST_P(Transform, IsLinearAndKeepsEnergy) {
    const std::vector<float> x = random_.values(2 * n_);
    const std::vector<float> y = random_.values(2 * n_);
    std::vector<float> sum(2 * n_);
    for (std::size_t i = 0; i < 2 * n_; ++i) sum[i] = 0.5F * x[i] - 2.0F * y[i];
    const std::vector<float> fx = forward(x);
    const std::vector<float> fy = forward(y);
    std::vector<double> expected(2 * n_);
    double energy = 0.0;
    double spectrum_energy = 0.0;
    for (std::size_t i = 0; i < 2 * n_; ++i) {
        expected[i] = 0.5 * double{fx[i]} - 2.0 * double{fy[i]};
        energy += double{x[i]} * double{x[i]};
        spectrum_energy += double{fx[i]} * double{fx[i]};
    }
    EXPECT_LT(relative_l2(forward(sum), expected), 2 * bound_ + 1e-7);
    EXPECT_NEAR(spectrum_energy / (energy * GetParam()), 1.0, 2 * bound_);
}

TEST_P(Transform, TurnsAShiftIntoAPhaseRamp) {
    const std::vector<float> x = random_.values(2 * n_);
    std::vector<float> shifted(x.begin() + 2, x.end());
    shifted.insert(shifted.end(), x.begin(), x.begin() + 2);
    Complexes expected = complex_values(forward(x));
    for (std::size_t k = 0; k < n_; ++k) {
        expected[k] *= std::polar(1.0L, 2 * reference::pi * k / n_);
    }
    EXPECT_LT(relative_l2(complex_values(forward(shifted)), expected), 2 * bound_);
}

TEST_P(Transform, SpreadsAnImpulseEvenly) {
    std::vector<float> impulse(2 * n_);
    impulse[0] = 1.0F;
    std::vector<float> flat(2 * n_);
    for (std::size_t i = 0; i < n_; ++i) flat[2 * i] = 1.0F;
    EXPECT_EQ(forward(impulse), flat);
    impulse[0] = static_cast<float>(n_);
    EXPECT_EQ(inverse(impulse), flat);
}

TEST_P(Transform, IsExportedForRealSignalsAndComplexSpectra) {
    const std::vector<float> x = random_.values(n_);
    std::vector<float> data(2 * n_);
    fft_pre_process(data, x.data(), GetParam());
    const std::vector<float> expected = forward(data);
    ASSERT_EQ(sorvoAudioFFT(data.data(), x.data(), GetParam()), SORVO_AUDIO_OK);
    EXPECT_TRUE(same_bits(data, expected));
    for (std::size_t k = 1; k < n_; ++k) {  // X[n - k] = conj(X[k])
        EXPECT_NEAR(data[2 * k], data[2 * (n_ - k)], bound_ * GetParam());
        EXPECT_NEAR(data[2 * k + 1], -data[2 * (n_ - k) + 1], bound_ * GetParam());
    }
    ASSERT_EQ(sorvoAudioIFFT(data.data(), data.data(), GetParam()), SORVO_AUDIO_OK);
    EXPECT_TRUE(same_bits(data, inverse(expected)));
}

std::vector<int> all_lengths() {
    std::vector<int> lengths;
    for (int n = 1; n <= 128; ++n) lengths.push_back(n);
    for (const int n : {131, 197,  251,  509,  1021, 2039,              // primes
                        256, 512,  1024, 2048, 4096,                    // powers of two
                        255, 257,  511,  513,  1023, 1025, 2047, 2049,  // next to them
                        144, 160,  200,  240,  360,  400,  441,  480,  600,  720,  882,
                        960, 1000, 1155, 1200, 1323, 1331, 1536, 2000, 2310, 3072, 4000}) {
        lengths.push_back(n);
    }
    return lengths;
}

INSTANTIATE_TEST_SUITE_P(Lengths, Transform, testing::ValuesIn(all_lengths()),
                         [](const auto& length) { return "n" + std::to_string(length.param); });
}  // namespace
