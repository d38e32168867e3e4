#include <algorithm>
#include <cmath>
#include <memory>

#include "elementwise/decibel.h"
#include "elementwise/magphase.h"
#include "elementwise_peers.h"
#include "math/arrays.h"
#include "math/called.h"
#include "math/complex_norm.h"
#include "rows.h"
#include "signals.h"

namespace sorvo::bench {
namespace {

using Samples = std::shared_ptr<const std::vector<float>>;

constexpr float top_db = 80.0F;

void norms_plainly(float* dst, const float* z, std::size_t n, float power) {
    for (std::size_t i = 0; i < n; ++i) {
        const float re = z[2 * i];
        const float im = z[2 * i + 1];
        dst[i] = ::powf(im * im + re * re, power * 0.5F);
    }
}

Row norm_row(const Samples& src, float power) {
    const std::size_t n = src->size() / 2;
    Row row{n, 1e-6, {}, {}};
    row.ours = [=](float* dst, audio::SimdLevel level) {
        audio::complex_norm_1d_core(dst, src->data(), static_cast<int>(n), power, level);
    };
    row.others.push_back({"plain", [=](float* dst) { norms_plainly(dst, src->data(), n, power); }});
    return row;
}

Row decibels_row(const Samples& src) {
    const int n = static_cast<int>(src->size());
    Row row{src->size(), 1e-6, {}, {}};
    row.ours = [=](float* dst, audio::SimdLevel level) {
        audio::convert_power_to_db(dst, src->data(), n, top_db, level);
    };
    row.others.push_back({"plain", [=](float* dst) { decibels_plainly(dst, src->data(), n); }});
    for (const ElementwisePeer& peer : elementwise_peers()) {
        row.others.push_back(
            {peer.name, [=](float* dst) { peer.decibels(dst, src->data(), n, top_db); }});
    }
    return row;
}

Row log1p_row(const Samples& src) {
    const std::size_t n = src->size();
    Row row{n, 1e-6, {}, {}};
    row.ours = [=](float* dst, audio::SimdLevel level) {
        audio::take_log1p(dst, src->data(), n, level);
    };
    row.others.push_back({"plain", [=](float* dst) { audio::call_log1pf(dst, src->data(), n); }});
    for (const ElementwisePeer& peer : elementwise_peers()) {
        row.others.push_back(
            {peer.name, [=](float* dst) { peer.log1p(dst, src->data(), static_cast<int>(n)); }});
    }
    return row;
}

/// Magnitudes, then angles or unit numbers.
Row mag_phase_row(const Samples& src, bool unit) {
    const std::size_t n = src->size() / 2;
    Row row{(unit ? 3 : 2) * n, 1e-6, {}, {}};
    row.ours = [=](float* dst, audio::SimdLevel level) {
        audio::magphase_1d_core(dst, dst + n, src->data(), n, 1.0F, unit, level);
    };
    row.others.push_back({"plain", [=](float* dst) {
                              norms_plainly(dst, src->data(), n, 1.0F);
                              float* const phase = dst + n;
                              if (!unit) {
                                  audio::call_atan2f(phase, src->data(), n);
                                  return;
                              }
                              for (std::size_t i = 0; i < n; ++i) {
                                  float angle = 0.0F;
                                  audio::call_atan2f(&angle, src->data() + 2 * i, 1);
                                  audio::call_cexpf(phase + 2 * i, &angle, 1);
                              }
                          }});
    for (const ElementwisePeer& peer : elementwise_peers()) {
        row.others.push_back({peer.name, [=](float* dst) {
                                  (unit ? peer.unit_numbers : peer.angles)(
                                      dst, dst + n, src->data(), static_cast<int>(n));
                              }});
    }
    return row;
}

}  // namespace

void decibels_plainly(float* dst, const float* src, int n) {
    const float ref = std::max(1e-10F, *std::max_element(src, src + n));
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        dst[i] = std::max(-top_db, audio::power_to_db(src[i], ref));
    }
}

Rows elementwise_rows() {
    const auto src = std::make_shared<const std::vector<float>>(make_signal(16000, 30.0));
    const auto powers = std::make_shared<std::vector<float>>(*src);
    for (float& x : *powers) x *= x;
    return {{"functions/decibels", [powers] { return decibels_row(powers); }},
            {"functions/log1p", [powers] { return log1p_row(powers); }},
            {"functions/angle", [src] { return mag_phase_row(src, false); }},
            {"functions/unit-numbers", [src] { return mag_phase_row(src, true); }},
            {"elementwise/norm-power", [src] { return norm_row(src, 2.0F); }},
            {"elementwise/norm-magnitude", [src] { return norm_row(src, 1.0F); }}};
}

}  // namespace sorvo::bench
