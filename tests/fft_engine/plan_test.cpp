#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <complex>
#include <thread>
#include <vector>

#include "fft_engine/bluestein.h"
#include "fft_engine/cooley_tukey.h"
#include "fft_engine/dft.h"
#include "fft_engine/dft_hard.h"
#include "fft_engine/fft.h"
#include "fft_engine/fft2.h"
#include "fft_engine/twiddles.h"
#include "reference_dft.h"
#include "util/exceptions.h"

namespace {

using namespace sorvo::audio::kelpon;
using sorvo::audio::SorvoInvalidArgument;
using sorvo_test::Signal;

template <class Plan>
Signal run(const Plan& plan, const Signal& in) {
    Signal out(in.size());
    plan.exec(in.data(), out.data());
    return out;
}

TEST(Plan, ChoosesTheAlgorithmByLength) {
    // Different algorithms round differently, so equal bits tell which one ran.
    const auto expect_choice = [](unsigned n, const fft::FFTImpl& forward,
                                  const fft::FFTImpl& inverse) {
        const Signal in = sorvo_test::random_signal(n);
        EXPECT_EQ(run(FFT(n, true), in), run(forward, in)) << n;
        EXPECT_EQ(run(FFT(n, false), in), run(inverse, in)) << n;
    };
    for (unsigned n = 1; n <= 5; ++n) {
        expect_choice(n, fft::DFTHARDImpl(n, n), fft::IDFTHARDImpl(n, n, true));
    }
    for (const unsigned n : {8U, 64U, 1024U}) {
        expect_choice(n, fft::FFT2Impl(n), fft::IFFT2Impl(n));
    }
    for (const unsigned n : {6U, 12U, 100U, 2018U}) {
        expect_choice(n, fft::CooleyTukeyFFTImpl(n), fft::CooleyTukeyIFFTImpl(n));
    }
    for (const unsigned n : {7U, 13U, 97U, 1009U}) {
        expect_choice(n, fft::BluesteinFFTImpl(n), fft::BluesteinIFFTImpl(n));
    }
    const Signal in = sorvo_test::random_signal(37);
    EXPECT_NE(run(FFT(37, true), in), run(fft::CooleyTukeyFFTImpl(37), in));
}

TEST(Plan, TakesAForcedAlgorithm) {
    const Signal in = sorvo_test::random_signal(16);
    EXPECT_EQ(run(FFT(16, true, fft::bluestein), in), run(fft::BluesteinFFTImpl(16), in));
    EXPECT_EQ(run(FFT(16, false, fft::direct_dft), in), run(fft::IDFTImpl(16, 16, true), in));
    EXPECT_EQ(run(FFT(16, true, static_cast<fft::FFTAlgorithm>(17)), in),
              run(fft::DFTImpl(16, fft::calcW(16)), in));
    EXPECT_NE(run(FFT(16, true, fft::bluestein), in), run(FFT(16, true, fft::direct_dft), in));
}

TEST(Plan, RefusesLengthsItCannotDo) {
    for (const bool forward : {true, false}) {
        EXPECT_THROW(FFT(0, forward), SorvoInvalidArgument);
        for (int algorithm = 0; algorithm <= 4; ++algorithm) {
            EXPECT_THROW(FFT(0, forward, static_cast<fft::FFTAlgorithm>(algorithm)),
                         SorvoInvalidArgument)
                << algorithm;
        }
        for (const unsigned n : {3U, 12U, 1023U}) {
            EXPECT_THROW(FFT(n, forward, fft::radix2), SorvoInvalidArgument) << n;
        }
        EXPECT_THROW(FFT(3000000000U, forward, fft::bluestein), SorvoInvalidArgument);
    }
    EXPECT_THROW(fft::DFTHARDImpl(6, 6), SorvoInvalidArgument);
    EXPECT_THROW(fft::IDFTImpl(0, 0, true), SorvoInvalidArgument);
}

TEST(Plan, InitReplansOnlyThisPlanAndOnlyOnSuccess) {
    const Signal in = sorvo_test::random_signal(30);
    FFT plan(30, true);
    const FFT copy = plan;
    const Signal expected = run(plan, in);
    EXPECT_THROW(plan.init(30, true, fft::radix2), SorvoInvalidArgument);
    EXPECT_EQ(run(plan, in), expected);
    plan.init(30, false, fft::cooley_tukey);
    EXPECT_LT(sorvo_test::relative_error(run(plan, expected), in), 1e-6);
    EXPECT_EQ(run(copy, in), expected);
}

TEST(Plan, RunsInSeveralThreadsAtOnce) {
    constexpr std::size_t thread_n = 4;
    for (const unsigned n : {60U, 1009U, 206U, 4096U}) {
        const FFT plan(n, n % 2 == 0);
        std::atomic<std::size_t> started{0};
        std::array<int, thread_n> wrong{};
        std::vector<std::thread> threads;
        for (std::size_t t = 0; t < thread_n; ++t) {
            threads.emplace_back([&, t] {
                Signal in = sorvo_test::random_signal(n);
                in[t] = {100.0F, 0.0F};  // each thread has its own signal
                const Signal expected = run(plan, in);
                ++started;
                while (started < thread_n) std::this_thread::yield();
                for (int i = 0; i < 500; ++i) wrong[t] += run(plan, in) == expected ? 0 : 1;
            });
        }
        for (auto& thread : threads) thread.join();
        for (const int count : wrong) EXPECT_EQ(count, 0) << n;
    }
}

}  // namespace
