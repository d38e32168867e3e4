// Shapes, centre modes and normalisations that the tests of both directions sweep.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "sorvo_audio.h"
#include "support/reference.h"

namespace sorvo::test {

struct Shape {
    int sample_n, fft_n, hop_n, win_n;
};

using AnalysisCase = std::tuple<Shape, int, int>;  // shape, centre, normalisation

inline std::string name_of(const testing::TestParamInfo<AnalysisCase>& info) {
    const auto& [shape, center, norm] = info.param;
    return "samples" + std::to_string(shape.sample_n) + "_fft" + std::to_string(shape.fft_n) +
           "_hop" + std::to_string(shape.hop_n) + "_win" + std::to_string(shape.win_n) +
           std::vector<std::string>{"_inside", "_reflect", "_zeros"}.at(
               static_cast<std::size_t>(center)) +
           "_norm" + std::to_string(norm);
}

inline std::size_t frames_of(const Shape& shape, int center) {
    int frame_n = 0;
    EXPECT_EQ(sorvoAudioGetFrameLen(&frame_n, shape.sample_n, shape.fft_n, shape.hop_n, center), 0);
    return static_cast<std::size_t>(frame_n);
}

/// The reference spectrogram; the signal is padded literally, further than any frame reaches.
inline reference::Complexes reference_stft(const std::vector<float>& x, const Shape& shape,
                                           int win_type, int center, int norm_type) {
    const auto margin = static_cast<std::size_t>(shape.fft_n + shape.hop_n);
    std::vector<float> padded = reference::padded(
        x, margin, center == 1 ? reference::Padding::reflect : reference::Padding::zeros);
    padded.erase(padded.begin(), padded.begin() + (shape.fft_n + shape.hop_n) -
                                     (center == 0 ? 0 : shape.fft_n / 2));
    return reference::stft(padded, frames_of(shape, center), static_cast<std::size_t>(shape.fft_n),
                           static_cast<std::size_t>(shape.hop_n),
                           static_cast<std::size_t>(shape.win_n), win_type, norm_type);
}

}  // namespace sorvo::test
