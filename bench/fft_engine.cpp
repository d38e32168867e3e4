// Speed of the FFT engine at each instruction set beside FFTW and KissFFT. All plans of one length
// take turns, so that whatever else the machine does weighs on all of them; medians are reported.
//
//     fft_engine [length...]
#include <fftw3.h>
#include <kissfft/kiss_fft.h>

#include <algorithm>
#include <chrono>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fft_engine/bluestein.h"
#include "fft_engine/cooley_tukey.h"
#include "fft_engine/fft2.h"
#include "fft_engine/primes.h"

namespace {

using namespace sorvo::audio;
using namespace sorvo::audio::kelpon;
using Clock = std::chrono::steady_clock;

constexpr int repetitions = 201;
// Short, so that most repetitions see no other process.
constexpr double seconds_per_repetition = 2e-4;

struct Contender {
    std::string name;
    std::function<void()> run;
    int calls = 1;
    std::vector<double> times{};
};

double seconds_of(const Contender& contender) {
    // What ran before has left its own data in the caches and the vector units asleep.
    for (int i = 0; i < (contender.calls + 1) / 2; ++i) contender.run();
    const auto start = Clock::now();
    for (int i = 0; i < contender.calls; ++i) contender.run();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Microseconds per call of each.
std::vector<double> measure(std::vector<Contender>& contenders) {
    for (Contender& contender : contenders) {
        while (seconds_of(contender) < seconds_per_repetition) contender.calls *= 2;
    }
    for (int i = 0; i < repetitions; ++i) {
        for (Contender& contender : contenders) {
            contender.times.push_back(seconds_of(contender) / contender.calls);
        }
    }
    std::vector<double> medians;
    for (Contender& contender : contenders) {
        const auto middle = contender.times.begin() + repetitions / 2;
        std::nth_element(contender.times.begin(), middle, contender.times.end());
        medians.push_back(*middle * 1e6);
    }
    return medians;
}

std::unique_ptr<fft::FFTImpl> make_plan(unsigned n, SimdLevel level) {
    if (fft::is_power_of_two(n)) return std::make_unique<fft::FFT2Impl>(n, level);
    if (fft::sieve_primes(n)[n]) return std::make_unique<fft::BluesteinFFTImpl>(n, level);
    return std::make_unique<fft::CooleyTukeyFFTImpl>(n, level);
}

void compare(unsigned n) {
    const auto allocate = [n] {
        return std::unique_ptr<fftwf_complex, decltype(&fftwf_free)>(fftwf_alloc_complex(n),
                                                                     fftwf_free);
    };
    const auto in = allocate();
    const auto out = allocate();
    const auto plan = [&](unsigned flags) {
        return std::shared_ptr<std::remove_pointer_t<fftwf_plan>>(
            fftwf_plan_dft_1d(static_cast<int>(n), in.get(), out.get(), FFTW_FORWARD, flags),
            fftwf_destroy_plan);
    };
    const auto estimate = plan(FFTW_ESTIMATE);
    const auto measured = plan(FFTW_MEASURE);
    const std::unique_ptr<kiss_fft_state, decltype(&std::free)> kiss(
        kiss_fft_alloc(static_cast<int>(n), 0, nullptr, nullptr), std::free);
    for (unsigned i = 0; i < n; ++i) {
        in.get()[i][0] = static_cast<float>(i % 7) - 3.0F;
        in.get()[i][1] = static_cast<float>(i % 5) - 2.0F;
    }

    std::vector<Contender> contenders;
    contenders.push_back({"FFTW estimate", [&] { fftwf_execute(estimate.get()); }});
    contenders.push_back({"FFTW measure", [&] { fftwf_execute(measured.get()); }});
    contenders.push_back({"KissFFT", [&] {
                              kiss_fft(kiss.get(), reinterpret_cast<kiss_fft_cpx*>(in.get()),
                                       reinterpret_cast<kiss_fft_cpx*>(out.get()));
                          }});
    constexpr std::size_t peer_n = 3;
    for (int level = static_cast<int>(simd_level()); level >= 0; --level) {
        const std::shared_ptr<fft::FFTImpl> engine = make_plan(n, static_cast<SimdLevel>(level));
        contenders.push_back({simd_level_name(static_cast<SimdLevel>(level)), [&in, &out, engine] {
                                  engine->exec(reinterpret_cast<std::complex<float>*>(in.get()),
                                               reinterpret_cast<std::complex<float>*>(out.get()));
                              }});
    }
    const std::vector<double> times = measure(contenders);
    for (std::size_t i = peer_n; i < times.size(); ++i) {
        std::printf("%6u  %-8s %10.3f   %8.2f %8.2f %8.2f\n", n, contenders[i].name.c_str(),
                    times[i], times[0] / times[i], times[1] / times[i], times[2] / times[i]);
    }
}

}  // namespace

int main(int argument_n, char** arguments) {
    std::vector<unsigned> lengths = {97,   127,  251,  400,  441,  480,  512,
                                     1009, 1024, 1200, 2048, 4096, 4410, 44100};
    if (argument_n > 1) {
        lengths.clear();
        for (int i = 1; i < argument_n; ++i) {
            lengths.push_back(static_cast<unsigned>(std::strtoul(arguments[i], nullptr, 10)));
        }
    }
    std::printf("                               times faster than\n");
    std::printf("     n  level            us   estimate  measure  KissFFT\n");
    for (const unsigned n : lengths) compare(n);
}
