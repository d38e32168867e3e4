#include "filter/filtfilt.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "filter/coefficients.h"
#include "filter/linerfilter.h"
#include "filter/zi_coef.h"
#include "stft/framing.h"
#include "util/exceptions.h"
#include "util/zeros.h"

namespace sorvo::audio {
namespace {

Extension extension_of(int pad_type, int pad_len, int src_n) {
    switch (pad_type) {
        case 1:
        case 2:
            if (pad_len >= src_n) {
                throw SorvoInvalidArgument("Invalid pad_len value.");
            }
            return pad_type == 1 ? Extension::odd : Extension::reflect;
        case 3:
            return Extension::constant;
        default:
            throw SorvoInvalidArgument("Invalid pad_type.");
    }
}

std::vector<double> scaled(std::vector<double> state, double factor) {
    for (double& z : state) {
        z = factor * z;
    }
    return state;
}

}  // namespace

void filtfilt(float* dst, const float* src, const float* n_coef, const float* d_coef, int dst_n,
              int src_n, int n_coef_n, int d_coef_n, int pad_type, int pad_len) {
    const int pad_n = pad_type == 0 ? 0 : std::max(pad_len, 0);
    std::size_t length = static_cast<std::size_t>(src_n);
    std::vector<float> extended;
    if (pad_n >= 1) {
        const Extension extension = extension_of(pad_type, pad_n, src_n);
        length += 2 * static_cast<std::size_t>(pad_n);
        extended = make_zeros<float>(length);
        extract_segment(extended, src, src_n, -static_cast<std::int64_t>(pad_n), extension);
    }
    const float* const x = extended.empty() ? src : extended.data();

    const FilterCoefficients coef(n_coef, d_coef, n_coef_n, d_coef_n);
    const std::size_t state_n = coef.b.size() - 1;
    auto steady = make_zeros<double>(state_n);
    create_zi_coef(steady.data(), n_coef, d_coef, static_cast<int>(state_n), n_coef_n, d_coef_n);

    auto y = make_zeros<double>(length);
    std::vector<double> state = scaled(steady, static_cast<double>(x[0]));
    run_filter(y.data(), x, coef, state.data(), length, false);
    state = scaled(steady, y[length - 1]);
    if (pad_n == 0 && dst_n == src_n) {
        run_filter(dst, y.data(), coef, state.data(), length, true);
        return;
    }
    run_filter(y.data(), y.data(), coef, state.data(), length, true);
    const std::size_t n =
        std::min(length - static_cast<std::size_t>(pad_n), static_cast<std::size_t>(dst_n));
    for (std::size_t i = 0; i < n; ++i) {
        dst[i] = static_cast<float>(y[static_cast<std::size_t>(pad_n) + i]);
    }
}

}  // namespace sorvo::audio
