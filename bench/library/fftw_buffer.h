// Ownership of what FFTW allocates.
#pragma once

#include <fftw3.h>

#include <algorithm>
#include <memory>
#include <type_traits>

namespace sorvo::bench {

class FftwBuffer {
  public:
    explicit FftwBuffer(int float_n) : data_(fftwf_alloc_real(static_cast<std::size_t>(float_n))) {
        std::fill(data(), data() + float_n, 0.0F);
    }
    float* data() const { return data_.get(); }
    fftwf_complex* complex() const { return reinterpret_cast<fftwf_complex*>(data()); }

  private:
    struct Free {
        void operator()(float* p) const { fftwf_free(p); }
    };
    std::unique_ptr<float, Free> data_;
};

struct FftwPlanDestroy {
    void operator()(fftwf_plan plan) const { fftwf_destroy_plan(plan); }
};
using FftwPlan = std::unique_ptr<std::remove_pointer_t<fftwf_plan>, FftwPlanDestroy>;

}  // namespace sorvo::bench
