// What becomes of a filter when its coefficients are rounded to single precision.
#pragma once

#include <string>

#include "settings/filter_settings.h"

namespace sorvo_tool {

// Says that rounding alone makes the filter unstable, or its response more than 1 % of the largest
// gain off; empty if neither.
std::string describe_rounding(const FilterDesign& design);

}  // namespace sorvo_tool
