#include <memory>

#include "elementwise_peers.h"
#include "plain.h"
#include "rows.h"
#include "signals.h"
#include "sorvo_audio.h"

namespace sorvo::bench {
namespace {

using Signal = std::shared_ptr<const std::vector<float>>;

Row norm_row(const Signal& src, float power) {
    const int n = static_cast<int>(src->size() / 2);
    Row row{src->size() / 2, 1e-6, {}};
    row.variants.push_back(
        {"ours", [=](float* dst) { sorvoAudioComplexNorm(dst, src->data(), n, power); }});
    row.variants.push_back(
        {"plain", [=](float* dst) { plain_complex_norm(dst, src->data(), n, power); }});
    return row;
}

Row decibels_row(const Signal& src) {
    const int n = static_cast<int>(src->size());
    Row row{src->size(), 1e-6, {}};
    row.variants.push_back(
        {"ours", [=](float* dst) { sorvoAudioConvertPowerToDB(dst, src->data(), n, 80.0F); }});
    row.variants.push_back({"plain", [=](float* dst) { plain_decibels(dst, src->data(), n); }});
    for (const ElementwisePeer& peer : elementwise_peers()) {
        row.variants.push_back(
            {peer.name, [=](float* dst) { peer.decibels(dst, src->data(), n, 80.0F); }});
    }
    return row;
}

Row log1p_row(const Signal& src) {
    const int n = static_cast<int>(src->size());
    Row row{src->size(), 1e-6, {}};
    row.variants.push_back({"ours", [=](float* dst) { sorvoAudioLog1p(dst, src->data(), n); }});
    row.variants.push_back({"plain", [=](float* dst) { plain_log1p(dst, src->data(), n); }});
    for (const ElementwisePeer& peer : elementwise_peers()) {
        row.variants.push_back({peer.name, [=](float* dst) { peer.log1p(dst, src->data(), n); }});
    }
    return row;
}

/// Magnitudes, then angles or unit numbers, in rows of 1000.
Row mag_phase_row(const Signal& src, bool unit) {
    constexpr int frame_n = 1000;
    const int freq_n = static_cast<int>(src->size() / 2) / frame_n;
    const int n = freq_n * frame_n;
    const auto phase = static_cast<std::size_t>(n);
    Row row{(unit ? 3 : 2) * phase, 1e-6, {}};
    row.variants.push_back(
        {"ours", [=](float* dst) {
             sorvoAudioMagPhase(dst, dst + phase, src->data(), freq_n, frame_n,
                                unit ? SORVO_AUDIO_PHASE_COMPLEX : SORVO_AUDIO_PHASE_ANGLE, 1.0F);
         }});
    row.variants.push_back(
        {"plain", [=](float* dst) { plain_mag_phase(dst, src->data(), n, unit); }});
    for (const ElementwisePeer& peer : elementwise_peers()) {
        row.variants.push_back({peer.name, [=](float* dst) {
                                    (unit ? peer.unit_numbers : peer.angles)(dst, dst + phase,
                                                                             src->data(), n);
                                }});
    }
    return row;
}

Row standardize_row(const Signal& src) {
    const int n = static_cast<int>(src->size());
    Row row{src->size(), 1e-6, {}};
    row.variants.push_back(
        {"ours", [=](float* dst) { sorvoAudioStandardize(dst, src->data(), n); }});
    row.variants.push_back({"plain", [=](float* dst) { plain_standardize(dst, src->data(), n); }});
    return row;
}

}  // namespace

Rows elementwise_rows() {
    const auto src = std::make_shared<const std::vector<float>>(make_signal(16000, 30.0));
    const auto powers = std::make_shared<std::vector<float>>(*src);
    for (float& x : *powers) x *= x;
    return {{"functions/decibels", [powers] { return decibels_row(powers); }},
            {"functions/log1p", [powers] { return log1p_row(powers); }},
            {"functions/angle", [src] { return mag_phase_row(src, false); }},
            {"functions/unit-numbers", [src] { return mag_phase_row(src, true); }},
            {"elementwise/norm-power", [src] { return norm_row(src, 2.0F); }},
            {"elementwise/norm-magnitude", [src] { return norm_row(src, 1.0F); }},
            {"elementwise/standardize", [src] { return standardize_row(src); }}};
}

}  // namespace sorvo::bench
