// Whole signals through other sample-rate converters, made beforehand and started afresh each time.
#pragma once

#include <memory>
#include <vector>

namespace sorvo::bench {

class Resampling {
  public:
    virtual ~Resampling() = default;
    virtual const char* name() const = 0;
    virtual void run(float* dst, int dst_n, const float* src, int src_n) = 0;
};

std::vector<std::shared_ptr<Resampling>> resample_peers(int dst_rate, int src_rate);

}  // namespace sorvo::bench
