#include "robustness/sample_calls.h"

#include <gtest/gtest.h>
#include <sorvo_audio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace sorvo::audio::test {
namespace {

std::vector<float> signal(std::size_t n) {
    std::vector<float> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        const auto t = static_cast<float>(i);
        x[i] = std::sin(0.1F * t) + 0.3F * std::sin(1.7F * t * t);
    }
    return x;
}

/// A sample call with `out_n(variant)` output floats: body(out, x, variant) makes the exported
/// call.
template <class OutN, class Body>
SampleCall sample(const char* name, OutN out_n, Body body) {
    return {name, [=](int variant, const Invoke& invoke, int& status) {
                std::vector<float> out(static_cast<std::size_t>(out_n(variant)), -777.0F);
                const std::vector<float> x = signal(4000);
                status = invoke([&] { return body(out.data(), x.data(), variant); });
                return out;
            }};
}

int* as_int(float* out) {
    return reinterpret_cast<int*>(out);
}

constexpr float numerator[] = {0.2F, 0.3F, 0.2F};
constexpr float denominator[] = {1.0F, -0.4F, 0.1F};

std::vector<SampleCall> make_calls() {
    const auto fixed = [](int n) { return [n](int) { return n; }; };
    std::vector<SampleCall> calls;
    for (const int n : {64, 60, 53}) {  // a power of two, a composite and a prime length
        const auto length = [n](int v) { return n == 64 ? 16 << v % 6 : n + 60 * v; };
        const auto floats = [=](int v) { return 2 * length(v); };
        calls.push_back(sample("FFT", floats, [=](float* out, const float* x, int v) {
            return sorvoAudioFFT(out, x, length(v));
        }));
        calls.push_back(sample("IFFT", floats, [=](float* out, const float* x, int v) {
            return sorvoAudioIFFT(out, x, length(v));
        }));
        calls.push_back(sample(
            "GetSpectrogram", [=](int v) { return (length(v) / 2 + 1) * 2 * 40; },
            [=](float* out, const float* x, int v) {
                return sorvoAudioGetSpectrogram(out, x, 3000, length(v), 50, length(v), 1, 40, 1,
                                                1.0F, 1);
            }));
        calls.push_back(
            sample("GetMelSpectrogram", fixed(8 * 40), [=](float* out, const float* x, int v) {
                return sorvoAudioGetMelSpectrogram(out, x, 3000, 16000, length(v), 50,
                                                   length(v) - 3, 2, 40, 2, 2.0F, 0, 20.0F, 7000.0F,
                                                   8, 1, 0);
            }));
        calls.push_back(
            sample("GetInverseSpectrogram", fixed(900), [=](float* out, const float* x, int v) {
                const int freq_n = length(v) / 2 + 1;
                return sorvoAudioGetInverseSpectrogram(out, x, 2000 / freq_n, freq_n, 7, freq_n, 1,
                                                       900, 1, 2);
            }));
    }
    calls.push_back(sample(
        "GetWindow", [](int v) { return 30 + v; },
        [](float* out, const float*, int v) {
            return sorvoAudioGetWindow(out, 30 + v, 1 + v % 2);
        }));
    calls.push_back(sample("GetFrameLen", fixed(1), [](float* out, const float*, int v) {
        return sorvoAudioGetFrameLen(as_int(out), 1000 + v, 100, 10, 2);
    }));
    calls.push_back(sample("GetSampleLen", fixed(1), [](float* out, const float*, int v) {
        return sorvoAudioGetSampleLen(as_int(out), 10 + v, 100, 10, 0);
    }));
    calls.push_back(sample(
        "GetFBMatrix", [](int v) { return 8 * (40 + v); },
        [](float* out, const float*, int v) {
            return sorvoAudioGetFBMatrix(out, 40 + v, 0.0F, 8000.0F, 8, 16000, 1, v % 2);
        }));
    calls.push_back(sample("ConvertToMel", fixed(10 * 7), [](float* out, const float* x, int) {
        return sorvoAudioConvertToMel(out, x, x + 2000, 20, 7, 10);
    }));
    calls.push_back(sample("LinerFilter", fixed(3000), [](float* out, const float* x, int) {
        return sorvoAudioLinerFilter(out, x, numerator, denominator, nullptr, 3000, 3000, 3, 3, 0);
    }));
    calls.push_back(sample("GetLinerFilterZiCoef", fixed(4), [](float* out, const float*, int) {
        return sorvoAudioGetLinerFilterZiCoef(out, numerator, denominator, 4, 3, 3);
    }));
    calls.push_back(sample("FilterFilter", fixed(3000), [](float* out, const float* x, int v) {
        return sorvoAudioFilterFilter(out, x, numerator, denominator, 3000, 3000, 3, 3, 1 + v % 3,
                                      9);
    }));
    calls.push_back(sample("Resample", fixed(500), [](float* out, const float* x, int v) {
        return sorvoAudioResample(out, x, 3 + v, 500, 8, 600);
    }));
    calls.push_back(sample("GetResampleLen", fixed(1), [](float* out, const float*, int v) {
        return sorvoAudioGetResampleLen(as_int(out), 16000, 1000 + v, 44100);
    }));
    calls.push_back(sample("ComplexNorm", fixed(300), [](float* out, const float* x, int) {
        return sorvoAudioComplexNorm(out, x, 300, 1.0F);
    }));
    calls.push_back(sample("MagPhase", fixed(900), [](float* out, const float* x, int v) {
        return sorvoAudioMagPhase(out, out + 300, x, 10, 30, v % 2, 1.0F);
    }));
    calls.push_back(sample("ConvertPowerToDB", fixed(300), [](float* out, const float* x, int) {
        return sorvoAudioConvertPowerToDB(out, x, 300, 80.0F);
    }));
    calls.push_back(sample("Log1p", fixed(300), [](float* out, const float* x, int) {
        std::array<float, 300> powers{};
        std::transform(x, x + 300, powers.begin(), [](float value) { return value * value; });
        return sorvoAudioLog1p(out, powers.data(), 300);
    }));
    calls.push_back(sample("Standardize", fixed(300), [](float* out, const float* x, int) {
        return sorvoAudioStandardize(out, x, 300);
    }));
    calls.push_back(sample("GetNonSilentPos", fixed(2), [](float* out, const float* x, int) {
        return sorvoAudioGetNonSilentPos(as_int(out), as_int(out + 1), x, 3000, 100, 40, 20.0F);
    }));
    calls.push_back(sample("FixFrameLen", fixed(120), [](float* out, const float* x, int) {
        return sorvoAudioFixFrameLen(out, x, 10, 12, 9, 1.0F);
    }));
    return calls;
}

}  // namespace

const std::vector<SampleCall>& sample_calls() {
    static const std::vector<SampleCall> calls = make_calls();
    return calls;
}

std::vector<float> outputs_of(const SampleCall& call, int variant) {
    int status = 0;
    std::vector<float> out = call.run(
        variant, [](const std::function<int()>& work) { return work(); }, status);
    EXPECT_EQ(status, SORVO_AUDIO_OK) << call.name;
    return out;
}

}  // namespace sorvo::audio::test
