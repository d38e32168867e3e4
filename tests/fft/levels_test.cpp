#include "fft/one_fft.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "fft/fft.h"
#include "fft/fft_plan.h"
#include "fft/fft_table.h"
#include "support/compare.h"
#include "support/levels.h"
#include "support/signals.h"

namespace {

using namespace sorvo::audio;

class OneTransform : public sorvo::test::AtLevel {
  protected:
    /// `complex` holds n complex elements, of whose floats the first n are the real ones. All
    /// vectors have just the size that the transforms may touch.
    void expect_plain_result(const std::vector<float>& complex, int n) const {
        const auto size = static_cast<std::size_t>(n);
        const std::vector<float> real(complex.begin(), complex.begin() + n);
        std::vector<float> forward(2 * size);
        fft_pre_process(forward, real.data(), n);
        fft(forward, n, FftTable::instance().ref_table(n));
        std::vector<float> inverse = complex;
        ifft(inverse, n, FftTable::instance().ref_inv_table(n));

        std::vector<float> dst(2 * size);
        real_fft(dst.data(), real.data(), n, GetParam());
        EXPECT_TRUE(sorvo::test::same_bits(dst, forward)) << "forward, n " << n;
        complex_ifft(dst.data(), complex.data(), n, GetParam());
        EXPECT_TRUE(sorvo::test::same_bits(dst, inverse)) << "inverse, n " << n;
        // The caller's array is both, or holds the real elements in its second half.
        dst = complex;
        complex_ifft(dst.data(), dst.data(), n, GetParam());
        EXPECT_TRUE(sorvo::test::same_bits(dst, inverse)) << "inverse in place, n " << n;
        std::copy(real.begin(), real.end(), dst.begin() + n);
        real_fft(dst.data(), dst.data() + n, n, GetParam());
        EXPECT_TRUE(sorvo::test::same_bits(dst, forward)) << "forward in place, n " << n;
    }

    void expect_plain_result_for_noise(int n) const {
        expect_plain_result(sorvo::test::noise(2 * static_cast<std::size_t>(n), 1.0F), n);
    }
};

TEST_P(OneTransform, IsThePlainOneForEveryKindOfSignal) {
    // Powers of two; composite lengths with and without factors that have code of their own;
    // primes; many residues, few, and one.
    for (const int n : {64, 128, 256, 512, 4096, 400, 480, 240, 441, 63, 1001, 202, 961, 97, 17}) {
        for (const sorvo::test::Signal& signal :
             sorvo::test::awkward_signals(2 * static_cast<std::size_t>(n))) {
            SCOPED_TRACE(signal.name);
            expect_plain_result(signal.x, n);
        }
    }
}

TEST_P(OneTransform, IsThePlainOneForEveryLength) {
    for (int n = 1; n <= 700; ++n) {
        expect_plain_result_for_noise(n);
    }
    for (int n = 701; n <= max_batch_n; n += 61) {
        expect_plain_result_for_noise(n);
    }
}

TEST_P(OneTransform, IsThePlainOneForLongOnes) {
    // Up to the longest with a plan and beyond it, in powers of two and otherwise; twiddles in
    // reach and (211 * 211) out of it.
    for (const int n : {8192, 65536, 131072, 8000, 10007, 44100, 211 * 211, 72000}) {
        expect_plain_result_for_noise(n);
    }
}

TEST_P(OneTransform, IsThePlainOneWhileThreadsDisplaceEachOthersPlans) {
    // More lengths than plans are kept, and more threads at once than places for one length each.
    std::vector<std::thread> threads;
    for (int first = 0; first < 6; ++first) {
        threads.emplace_back([&, first] {
            for (int i = 0; i < 300; ++i) {
                expect_plain_result_for_noise(90 + (first * 7 + i) % 40);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

SORVO_TEST_AT_ALL_LEVELS(OneTransform);

}  // namespace
