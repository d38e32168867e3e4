// Every export fills exactly the outputs that it documents, whatever their size.

#include <gtest/gtest.h>

#include <vector>

#include "sorvo_audio.h"
#include "support/guarded.h"
#include "support/random.h"

namespace {

using sorvo::test::Guarded;
using sorvo::test::Random;

class Outputs : public testing::TestWithParam<int> {
  protected:
    const int n_ = GetParam();
    const std::size_t size_ = static_cast<std::size_t>(n_);
    Random random_{static_cast<unsigned>(n_)};
    const std::vector<float> in_ = random_.values(size_ * size_ + 20 * size_ + 100);
    const float* x_ = in_.data();

    /// An output array of `floats`, that `call` fills.
    template <class Call>
    static void expect_filled(std::size_t floats, Call call) {
        Guarded<float> out(floats);
        EXPECT_EQ(call(out.data()), SORVO_AUDIO_OK);
        EXPECT_TRUE(out.filled());
    }
    template <class Call>
    static void expect_number(Call call) {
        Guarded<int> out(1);
        EXPECT_EQ(call(out.data()), SORVO_AUDIO_OK);
        EXPECT_TRUE(out.filled());
    }
};

TEST_P(Outputs, OfTransformsAndWindows) {
    expect_filled(2 * size_, [&](float* out) { return sorvoAudioFFT(out, x_, n_); });
    expect_filled(2 * size_, [&](float* out) { return sorvoAudioIFFT(out, x_, n_); });
    expect_filled(size_, [&](float* out) { return sorvoAudioGetWindow(out, n_, 1); });
    expect_number([&](int* out) { return sorvoAudioGetFrameLen(out, n_, 2, 1, 0); });
    expect_number([&](int* out) { return sorvoAudioGetSampleLen(out, n_, 2, 1, 0); });
    for (int center : {0, 1, 2}) {
        int frame_n = 0;
        ASSERT_EQ(sorvoAudioGetFrameLen(&frame_n, 3 * n_ + 5, n_, 3, center), 0);
        const std::size_t bins = static_cast<std::size_t>((n_ / 2 + 1) * frame_n);
        expect_filled(2 * bins, [&](float* out) {
            return sorvoAudioGetSpectrogram(out, x_, 3 * n_ + 5, n_, 3, n_ + 1, 2, frame_n, center,
                                            2.0F, 1);
        });
        if (n_ < 2) continue;
        const int freq_n = n_ / 2 + 1;
        expect_filled(size_, [&](float* out) {
            return sorvoAudioGetInverseSpectrogram(out, x_, 8, freq_n, n_ / 4 + 1, n_, 2, n_,
                                                   center, 2);
        });
        expect_filled(size_ / 2 * static_cast<std::size_t>(frame_n), [&](float* out) {
            return sorvoAudioGetMelSpectrogram(out, x_, 3 * n_ + 5, 8000, n_, 3, n_, 1, frame_n,
                                               center, 2.0F, 0, 0.0F, 4000.0F, n_ / 2, 1, 0);
        });
    }
}

TEST_P(Outputs, OfMelConversion) {
    expect_filled(size_ * (size_ + 2), [&](float* out) {
        return sorvoAudioGetFBMatrix(out, n_ + 2, 0.0F, 4000.0F, n_, 8000, 1, 1);
    });
    expect_filled(2 * size_,
                  [&](float* out) { return sorvoAudioConvertToMel(out, x_, x_, 3, n_, 2); });
    expect_filled(2 * size_,
                  [&](float* out) { return sorvoAudioConvertToMel(out, x_, x_, n_ + 2, 2, n_); });
}

TEST_P(Outputs, OfFiltersAndResampling) {
    const std::vector<float> b = {0.1F, 0.2F, 0.1F, 0.05F};
    const std::vector<float> a = {1.0F, -0.5F, 0.1F};
    Guarded<float> state(3);
    std::fill_n(state.data(), 3, 0.0F);
    expect_filled(size_, [&](float* out) {
        return sorvoAudioLinerFilter(out, x_, b.data(), a.data(), state, n_, n_, 4, 3, 3);
    });
    EXPECT_TRUE(state.filled());
    expect_filled(size_, [&](float* out) {
        return sorvoAudioGetLinerFilterZiCoef(out, b.data(), a.data(), n_, 4, 3);
    });
    for (const int pad_type : {0, 1, 2, 3}) {
        expect_filled(size_, [&](float* out) {
            return sorvoAudioFilterFilter(out, x_, b.data(), a.data(), n_, n_, 4, 3, pad_type,
                                          n_ - 1);
        });
    }
    for (const int rate : {1, 2, 3, 7}) {
        expect_filled(size_,
                      [&](float* out) { return sorvoAudioResample(out, x_, rate, n_, 2, 9); });
        expect_number([&](int* out) { return sorvoAudioGetResampleLen(out, rate, n_, 2); });
    }
}

TEST_P(Outputs, OfElementwiseOperations) {
    expect_filled(size_, [&](float* out) { return sorvoAudioComplexNorm(out, x_, n_, 2.0F); });
    for (const std::size_t form : {0U, 1U}) {
        Guarded<float> phase(2 * size_ * (1 + form));
        expect_filled(2 * size_, [&](float* out) {
            return sorvoAudioMagPhase(out, phase, x_, n_, 2, static_cast<int>(form), 1.0F);
        });
        EXPECT_TRUE(phase.filled());
    }
    expect_filled(size_,
                  [&](float* out) { return sorvoAudioConvertPowerToDB(out, x_, n_, 80.0F); });
    expect_filled(size_, [&](float* out) { return sorvoAudioLog1p(out, x_, n_); });
    expect_filled(size_, [&](float* out) { return sorvoAudioStandardize(out, x_, n_); });
    expect_filled(3 * size_,
                  [&](float* out) { return sorvoAudioFixFrameLen(out, x_, 3, n_, 4, 1.0F); });
    Guarded<int> len(1);
    expect_number(
        [&](int* out) { return sorvoAudioGetNonSilentPos(out, len, x_, n_, 1, 1, 9.0F); });
    EXPECT_TRUE(len.filled());
}

INSTANTIATE_TEST_SUITE_P(Sizes, Outputs,
                         testing::Values(1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 31, 32, 33, 64, 65, 100),
                         testing::PrintToStringParamName());

}  // namespace
