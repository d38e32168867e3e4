// Linear filters in blocks.
#pragma once

#include <string>
#include <vector>

#include "settings/filter_settings.h"

namespace sorvo_tool {

// One filter after the other, over one channel. Joined, the results are those of the whole signal,
// bit for bit.
class FilterChain {
  public:
    // `settled`: begins as if the first sample had always been there.
    FilterChain(const std::vector<Section>& sections, bool settled, std::string file);

    void apply(std::vector<float>& samples);

  private:
    struct Stage {
        std::vector<float> b, a, state;
    };
    void settle(float first_sample);

    std::string file_;
    bool is_to_settle_;
    std::vector<Stage> stages_;
};

}  // namespace sorvo_tool
