#include "support/cepstra.h"

#include <sorvo_audio.h>

#include <cmath>
#include <cstddef>
#include <utility>

#include "support/failure.h"

namespace sorvo_tool {
namespace {

// The transform, [coefficient_n][band_n + 1] with a column of zeros, from the cosines of the
// library: bin k of a single 1 at sample 2 i + 1 of 4 n is the cosine of 2 pi k (2 i + 1) / (4 n).
std::vector<float> cosines(int band_n, int coefficient_n, const std::string& file) {
    const auto n = static_cast<std::size_t>(band_n);
    const auto scale = static_cast<float>(std::sqrt(2.0 / band_n));
    std::vector<float> basis(static_cast<std::size_t>(coefficient_n) * (n + 1));
    std::vector<float> impulse(4 * n);
    std::vector<float> spectrum(2 * impulse.size());
    for (std::size_t i = 0; i < n; ++i) {
        impulse.assign(impulse.size(), 0);
        impulse[2 * i + 1] = 1;
        check_status(sorvoAudioFFT(spectrum.data(), impulse.data(), 4 * band_n), "sorvoAudioFFT",
                     file);
        for (std::size_t k = 0; k < static_cast<std::size_t>(coefficient_n); ++k)
            basis[k * (n + 1) + i] =
                spectrum[2 * k] * (k == 0 ? static_cast<float>(std::sqrt(1.0 / band_n)) : scale);
    }
    return basis;
}

}  // namespace

CosineTransform::CosineTransform(int band_n, int coefficient_n, std::string file)
    : band_n_(band_n),
      coefficient_n_(coefficient_n),
      file_(std::move(file)),
      basis_(cosines(band_n, coefficient_n, file_)) {}

std::vector<float> CosineTransform::operator()(std::vector<float> levels) const {
    const std::size_t frame_n = levels.size() / static_cast<std::size_t>(band_n_);
    // The library projects on fewer rows than it is given, so a band of zeros, with no weight, is
    // added.
    levels.resize(levels.size() + frame_n);
    std::vector<float> result(static_cast<std::size_t>(coefficient_n_) * frame_n);
    check_status(sorvoAudioConvertToMel(result.data(), levels.data(), basis_.data(), band_n_ + 1,
                                        static_cast<int>(frame_n), coefficient_n_),
                 "sorvoAudioConvertToMel", file_);
    return result;
}

}  // namespace sorvo_tool
