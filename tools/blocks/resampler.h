// Sample-rate conversion in blocks.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sorvo_tool {

// Of one channel. Joined, the results are those of the whole signal in one call, bit for bit, with
// its end complete.
class Resampler {
  public:
    // Throws a Failure where an output would be made for far less or more than an input, as the
    // rate of a damaged header asks for; `file` is named in failures.
    Resampler(int from_rate, int to_rate, double most_ratio, std::string file);

    std::vector<float> push(const std::vector<float>& samples);
    std::vector<float> flush();

    // Outputs of so many samples.
    std::int64_t output_n(std::int64_t sample_n) const;

  private:
    std::vector<float> outputs(std::int64_t end);
    std::int64_t first_period() const;

    std::string file_;
    int from_rate_;
    int to_rate_;
    std::int64_t up_;
    std::int64_t down_;
    std::vector<float> samples_;  // from position first_ on
    std::int64_t first_ = 0;
    std::int64_t sample_n_ = 0;  // of the whole signal so far
    std::int64_t output_n_ = 0;  // that have been returned
};

// What a conversion to less than a quarter of the rate lets through; empty for others.
std::string describe_aliasing(int from_rate, int to_rate);

}  // namespace sorvo_tool
