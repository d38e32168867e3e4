// Relative L2 error of the FFT engine against a transform in long double, forward and inverse.
#include <algorithm>
#include <cstdio>
#include <vector>

#include "../tests/fft_engine/reference_dft.h"
#include "fft_engine/fft.h"

namespace {

using namespace sorvo::audio::kelpon;

struct Errors {
    double forward;
    double inverse;
};

Errors measure(unsigned n, fft::FFTAlgorithm algorithm) {
    const sorvo_test::Signal in = sorvo_test::random_signal(n);
    sorvo_test::Signal out(n);
    FFT(n, true, algorithm).exec(in.data(), out.data());
    const double forward = sorvo_test::relative_error(out, sorvo_test::exact_dft(in, -1));
    FFT(n, false, algorithm).exec(in.data(), out.data());
    auto expected = sorvo_test::exact_dft(in, +1);
    for (auto& value : expected) value /= static_cast<long double>(n);
    return {forward, sorvo_test::relative_error(out, expected)};
}

void report_range(const char* name, fft::FFTAlgorithm algorithm, unsigned first, unsigned last) {
    double worst = 0.0;
    double sum = 0.0;
    unsigned worst_n = 0;
    int count = 0;
    for (unsigned n = first; n <= last; ++n) {
        if (algorithm == fft::radix2 && (n & (n - 1)) != 0) continue;
        const Errors errors = measure(n, algorithm);
        const double larger = std::max(errors.forward, errors.inverse);
        if (larger > worst) {
            worst = larger;
            worst_n = n;
        }
        sum += larger;
        ++count;
    }
    std::printf("%-14s %5u..%-5u mean %.2e  worst %.2e at %u\n", name, first, last, sum / count,
                worst, worst_n);
}

}  // namespace

int main() {
    report_range("hard-coded", fft::direct_dft, 1, 5);
    report_range("direct", fft::direct_dft, 6, 1024);
    report_range("radix-2", fft::radix2, 1, 8192);
    report_range("Cooley-Tukey", fft::cooley_tukey, 1, 1024);
    report_range("Bluestein", fft::bluestein, 1, 1024);

    struct {
        unsigned n;
        fft::FFTAlgorithm algorithm;
    } const larger[] = {
        {16384, fft::radix2},      {2310, fft::cooley_tukey},  {4095, fft::cooley_tukey},
        {4410, fft::cooley_tukey}, {10201, fft::cooley_tukey}, {44100, fft::cooley_tukey},
        {2039, fft::bluestein},    {4093, fft::bluestein},     {16381, fft::bluestein},
    };
    std::printf("%6s %10s %10s\n", "n", "forward", "inverse");
    for (const auto& plan : larger) {
        const Errors errors = measure(plan.n, plan.algorithm);
        std::printf("%6u %10.2e %10.2e\n", plan.n, errors.forward, errors.inverse);
    }
}
