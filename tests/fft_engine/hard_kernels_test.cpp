// The transforms of 1 to 5 values.
#include <gtest/gtest.h>

#include <complex>
#include <vector>

#include "fft_engine/dft.h"
#include "fft_engine/dft_hard.h"
#include "reference_dft.h"

namespace {

using namespace sorvo::audio::kelpon::fft;
using sorvo_test::Signal;

template <class In>
void expect_blocks(const FFTImpl& implementation, const std::vector<In>& in, unsigned n, int sign,
                   long double scale) {
    Signal out(in.size() + 1, {99.0F, 99.0F});
    implementation.exec(in.data(), out.data());
    for (std::size_t block = 0; block < in.size(); block += n) {
        const std::vector<In> values(in.begin() + static_cast<std::ptrdiff_t>(block),
                                     in.begin() + static_cast<std::ptrdiff_t>(block + n));
        auto exact = sorvo_test::exact_dft(values, sign);
        for (auto& value : exact) value *= scale;
        const Signal actual(out.begin() + static_cast<std::ptrdiff_t>(block),
                            out.begin() + static_cast<std::ptrdiff_t>(block + n));
        EXPECT_LT(sorvo_test::relative_error(actual, exact), 3e-7) << n << ' ' << block;
    }
    EXPECT_EQ(out.back(), std::complex<float>(99.0F, 99.0F)) << n;
}

TEST(HardKernels, TransformEachBlockInEveryFlavour) {
    for (unsigned n = 1; n <= 5; ++n) {
        const Signal complexes = sorvo_test::random_signal(std::size_t{3} * n);
        const std::vector<float> reals = sorvo_test::real_parts(complexes);
        const std::vector<short> shorts = sorvo_test::short_parts(complexes);
        const long double inverse_n = 1.0L / n;
        const auto expect_all = [&](const FFTImpl& implementation, int sign, long double scale) {
            expect_blocks(implementation, complexes, n, sign, scale);
            expect_blocks(implementation, reals, n, sign, scale);
            expect_blocks(implementation, shorts, n, sign, scale);
        };
        expect_all(DFTHARDImpl(n, 3 * n), -1, 1.0L);
        expect_all(IDFTHARDImpl(n, 3 * n, true), +1, inverse_n);
        expect_all(IDFTHARDImpl(n, 3 * n, false), +1, 1.0L);
        expect_all(IDFTImpl(n, 3 * n, true), +1, inverse_n);
        expect_all(IDFTImpl(n, 3 * n, false), +1, 1.0L);
    }
}

TEST(HardKernels, LengthTwoIsSumAndDifference) {
    const float in[] = {0.1F, 0.7F};
    std::complex<float> out[2];
    DFTHARDImpl(2, 2).exec(in, out);
    EXPECT_EQ(out[0], std::complex<float>(in[0] + in[1], 0.0F));
    EXPECT_EQ(out[1], std::complex<float>(in[0] - in[1], 0.0F));
    IDFTHARDImpl(2, 2, true).exec(in, out);
    EXPECT_EQ(out[0], std::complex<float>((in[0] + in[1]) * 0.5F, 0.0F));
    EXPECT_EQ(out[1], std::complex<float>((in[0] - in[1]) * 0.5F, 0.0F));
}

}  // namespace
