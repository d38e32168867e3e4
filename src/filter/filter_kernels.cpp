#include "filter/filter_kernels.h"

#include "filter/fir_outputs.inl"
#include "filter/lane_rows.inl"

namespace sorvo::audio::SORVO_LEVEL {
namespace {

template <class Out, class In, class State>
constexpr LaneFilterKernels<Out, In, State> make_lane_filter_kernels() {
    return {{run_rows<1, Out, In, State>, run_rows<2, Out, In, State>}};
}

}  // namespace

const FilterKernels filter_kernels = {make_lane_filter_kernels<float, float, float>(),
                                      make_lane_filter_kernels<double, float, double>(),
                                      make_lane_filter_kernels<double, double, double>(),
                                      make_lane_filter_kernels<float, double, double>(),
                                      {fir_outputs<float>},
                                      {fir_outputs<double>}};

}  // namespace sorvo::audio::SORVO_LEVEL
