#include <memory>

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
    return {{"elementwise/norm-power", [src] { return norm_row(src, 2.0F); }},
            {"elementwise/norm-magnitude", [src] { return norm_row(src, 1.0F); }},
            {"elementwise/standardize", [src] { return standardize_row(src); }}};
}

}  // namespace sorvo::bench
