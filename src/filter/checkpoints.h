#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "filter/chunk_kernels.h"

namespace sorvo::audio {

/// The states of all lanes at points of their chunks, [checkpoint][state value][lane].
template <class State>
class Checkpoints {
  public:
    Checkpoints(std::size_t state_n, std::size_t max_n) : state_n_(state_n) {
        states_.reserve(max_n * state_n * chunk_lane_n);
        positions_.reserve(max_n);
    }

    void clear() {
        states_.clear();
        positions_.clear();
    }

    /// The states z of all lanes after `position` samples of their chunks.
    void add(std::size_t position, const std::vector<State>& z) {
        states_.insert(states_.end(), z.begin(), z.end());
        positions_.push_back(position);
    }

    std::size_t size() const { return positions_.size(); }
    std::size_t position(std::size_t i) const { return positions_[i]; }

    bool equals(std::size_t i, std::size_t lane, const State* state) const {
        for (std::size_t k = 0; k < state_n_; ++k) {
            if (std::memcmp(&value(i, k, lane), state + k, sizeof(State)) != 0) {
                return false;
            }
        }
        return true;
    }

    void get(std::size_t i, std::size_t lane, State* state) const {
        for (std::size_t k = 0; k < state_n_; ++k) {
            state[k] = value(i, k, lane);
        }
    }

  private:
    const State& value(std::size_t i, std::size_t k, std::size_t lane) const {
        return states_[(i * state_n_ + k) * chunk_lane_n + lane];
    }

    std::size_t state_n_;
    std::vector<State> states_;
    std::vector<std::size_t> positions_;
};

}  // namespace sorvo::audio
