#include "blocks/filter_chain.h"

#include <sorvo_audio.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "support/failure.h"

namespace sorvo_tool {

FilterChain::FilterChain(const std::vector<Section>& sections, bool settled, std::string file)
    : file_(std::move(file)), is_to_settle_(settled) {
    for (const Section& section : sections) {
        Stage stage{section.b(), section.a(), {}};
        stage.state.resize(std::max(stage.b.size(), stage.a.size()) - 1);
        stages_.push_back(std::move(stage));
    }
}

// Each filter's state is that of a constant input, which all before it have scaled.
void FilterChain::settle(float first_sample) {
    double gain = 1;
    for (Stage& stage : stages_) {
        if (!stage.state.empty())
            check_status(sorvoAudioGetLinerFilterZiCoef(
                             stage.state.data(), stage.b.data(), stage.a.data(),
                             static_cast<int>(stage.state.size()), static_cast<int>(stage.b.size()),
                             static_cast<int>(stage.a.size())),
                         "sorvoAudioGetLinerFilterZiCoef", file_);
        for (float& value : stage.state) value = static_cast<float>(gain) * value * first_sample;
        gain *= std::accumulate(stage.b.begin(), stage.b.end(), 0.0) /
                std::accumulate(stage.a.begin(), stage.a.end(), 0.0);
    }
}

void FilterChain::apply(std::vector<float>& samples) {
    if (samples.empty()) return;
    if (is_to_settle_) settle(samples.front());
    is_to_settle_ = false;
    const auto sample_n = static_cast<int>(samples.size());
    for (Stage& stage : stages_)
        check_status(sorvoAudioLinerFilter(
                         samples.data(), samples.data(), stage.b.data(), stage.a.data(),
                         stage.state.data(), sample_n, sample_n, static_cast<int>(stage.b.size()),
                         static_cast<int>(stage.a.size()), static_cast<int>(stage.state.size())),
                     "sorvoAudioLinerFilter", file_);
}

}  // namespace sorvo_tool
