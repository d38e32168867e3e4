// Every bound here is the worst value that bench/accuracy prints, with a margin of a fifth to a
// half.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

#include "fft_engine/fft.h"
#include "reference_dft.h"

namespace {

using namespace sorvo::audio::kelpon;
using sorvo_test::Exact;
using sorvo_test::Signal;

void expect_accurate(unsigned n, fft::FFTAlgorithm algorithm, double bound) {
    const Signal in = sorvo_test::random_signal(n);
    const std::vector<Exact> exact = sorvo_test::exact_dft(in, -1);
    Signal spectrum(n);
    FFT(n, true, algorithm).exec(in.data(), spectrum.data());
    EXPECT_LT(sorvo_test::relative_error(spectrum, exact), bound) << n;

    Signal rounded(exact.size());
    for (std::size_t k = 0; k < n; ++k) rounded[k] = std::complex<float>(exact[k]);
    Signal signal(n);
    FFT(n, false, algorithm).exec(rounded.data(), signal.data());
    EXPECT_LT(sorvo_test::relative_error(signal, in), bound) << n << " inverse";
}

TEST(Accuracy, Radix2) {
    for (unsigned n = 1; n <= 8192; n *= 2) {
        expect_accurate(n, fft::radix2, 2.5e-8 * std::log2(n) + 4e-8);
    }
}

TEST(Accuracy, CooleyTukey) {
    for (unsigned n = 1; n <= 512; ++n) expect_accurate(n, fft::cooley_tukey, 6e-7);
    for (unsigned n = 513; n <= 1024; n += 3) expect_accurate(n, fft::cooley_tukey, 6e-7);
    // Large prime factors, also one inside the other.
    for (const unsigned n : {1017U, 2018U, 4095U, 4410U}) {
        expect_accurate(n, fft::cooley_tukey, 6e-7);
    }
    expect_accurate(101 * 103, fft::cooley_tukey, 8e-7);
}

TEST(Accuracy, Bluestein) {
    for (unsigned n = 1; n <= 512; ++n) expect_accurate(n, fft::bluestein, 6e-7);
    for (const unsigned n : {521U, 769U, 1009U, 1021U, 1024U, 2039U, 4093U}) {
        expect_accurate(n, fft::bluestein, 6e-7);
    }
}

TEST(Accuracy, Direct) {
    for (unsigned n = 1; n <= 5; ++n) expect_accurate(n, fft::direct_dft, 7e-8);
    for (unsigned n = 6; n <= 128; ++n) expect_accurate(n, fft::direct_dft, 3e-7);
}

/// Runs a plan with a guard behind its output.
template <class In>
Signal transform(const FFT& plan, const std::vector<In>& in) {
    const std::complex<float> guard = {-1234.0F, 4321.0F};
    Signal out(in.size() + 16, guard);
    plan.exec(in.data(), out.data());
    for (std::size_t i = in.size(); i < out.size(); ++i) EXPECT_EQ(out[i], guard) << in.size();
    out.resize(in.size());
    return out;
}

/// Outputs of a transform and its way back; `roots` as for the exact forward transform.
void expect_transform(const FFT& forward, const FFT& inverse, const Signal& in,
                      const std::vector<Exact>& roots) {
    const std::size_t n = in.size();
    const Signal spectrum = transform(forward, in);
    long double energy = 0;
    for (const auto& value : in) energy += std::norm(Exact(value));
    const auto norm = static_cast<double>(std::sqrt(energy));
    for (const std::size_t k : {1 % n, n / 2, n - 1}) {
        const Exact exact = sorvo_test::exact_bin(in, roots, k);
        // The error of one output against the size of a typical one; measured: at most 1.8e-6.
        EXPECT_LT(std::abs(Exact(spectrum[k]) - exact), 2.5e-6 * norm) << n << ' ' << k;
    }
    const Signal back = transform(inverse, spectrum);
    EXPECT_LT(sorvo_test::relative_error(back, in), 8e-7) << n;  // measured: 6.1e-7

    Signal in_place = in;
    forward.exec(in_place.data(), in_place.data());
    EXPECT_EQ(in_place, spectrum) << n;
    inverse.exec(in_place.data(), in_place.data());
    EXPECT_EQ(in_place, back) << n;
}

/// Real input is complex input with imaginary part 0, to the last bit.
template <class Real>
void expect_same_as_complex(const FFT& plan, const std::vector<Real>& in) {
    EXPECT_EQ(transform(plan, in), transform(plan, Signal(in.begin(), in.end()))) << in.size();
}

TEST(Sweep, EveryLengthTransformsAndComesBackFromEveryInputType) {
    for (unsigned n = 1; n <= 4096; ++n) {
        const FFT forward(n, true);
        const FFT inverse(n, false);
        const Signal in = sorvo_test::random_signal(n);
        expect_transform(forward, inverse, in, sorvo_test::exact_roots(n, -1));
        for (const FFT* plan : {&forward, &inverse}) {
            expect_same_as_complex(*plan, sorvo_test::real_parts(in));
            expect_same_as_complex(*plan, sorvo_test::short_parts(in));
        }
    }
}

TEST(Sweep, LargeLengthsTransformAndComeBack) {
    for (const unsigned n : {65536U, 65537U, 2U * 32749U, 44100U, 1009U * 1013U, 1U << 20}) {
        expect_transform(FFT(n, true), FFT(n, false), sorvo_test::random_signal(n),
                         sorvo_test::exact_roots(n, -1));
    }
}

}  // namespace
