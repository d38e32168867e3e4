// Framing in blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "settings/frame_settings.h"

namespace sorvo_tool {

// Cuts a signal whose length is not known yet into the frames of the whole.
class FrameCutter {
  public:
    // Takes samples from which `frame_n` frames are to be computed without centring.
    using Take = std::function<void(const float* samples, int sample_n, int frame_n)>;

    // At most `most_frame_n` frames are taken at a time.
    FrameCutter(const FrameSettings& frame, int most_frame_n, Take take);

    void push(const std::vector<float>& samples);
    void flush();

    std::int64_t sample_n() const { return sample_n_; }
    std::int64_t frame_n() const { return frame_n_; }  // taken so far; after flush() all

  private:
    void take_frames(std::int64_t end);
    std::int64_t begin_of(std::int64_t frame) const;
    void forget_before(std::int64_t position);

    FrameSettings frame_;
    int most_frame_n_;
    Take take_;
    std::vector<float> samples_;  // from position first_ on
    std::int64_t first_ = 0;
    std::int64_t sample_n_ = 0;
    std::int64_t frame_n_ = 0;
};

// The number of frames of a signal; the library's, and beyond 2147483647 samples the exact one.
std::int64_t count_frames(const FrameSettings& frame, std::int64_t sample_n);

// A signal with `pad_n` samples reflected at both ends.
class EndReflector {
  public:
    explicit EndReflector(int pad_n) : pad_n_(static_cast<std::size_t>(pad_n)) {}

    std::vector<float> push(const std::vector<float>& samples);
    std::vector<float> flush();  // of more than pad_n samples

  private:
    std::size_t pad_n_;
    bool has_begun_ = false;
    std::vector<float> tail_;  // before the beginning is complete, all; later what the end needs
};

}  // namespace sorvo_tool
