// `dst` may be `src`, of which the compiler is told by ivdep: what is read is not written before.
// Compiled once for each of the processor levels in elementwise_peers(), which SORVO_PEER_LEVEL
// names.
#include <cmath>
#include <cstddef>

#include "elementwise_peers.h"

namespace sorvo::bench::SORVO_PEER_LEVEL {
namespace {

void decibels(float* dst, const float* src, int n, float top_db) {
    const auto count = static_cast<std::size_t>(n);
    float max = 1e-10F;
    for (std::size_t i = 0; i < count; ++i) max = src[i] > max ? src[i] : max;
    const float ref_db = 10.0F * std::log10(max);
#pragma GCC ivdep
    for (std::size_t i = 0; i < count; ++i) {
        const float db = 10.0F * std::log10(src[i] > 1e-10F ? src[i] : 1e-10F) - ref_db;
        dst[i] = db > -top_db ? db : -top_db;
    }
}

void log1p(float* dst, const float* src, int n) {
    const auto count = static_cast<std::size_t>(n);
#pragma GCC ivdep
    for (std::size_t i = 0; i < count; ++i) dst[i] = std::log1p(src[i]);
}

void angles(float* mag, float* phase, const float* src, int n) {
    const auto count = static_cast<std::size_t>(n);
#pragma GCC ivdep
    for (std::size_t i = 0; i < count; ++i) {
        const float re = src[2 * i];
        const float im = src[2 * i + 1];
        mag[i] = std::sqrt(re * re + im * im);
        phase[i] = std::atan2(im, re);
    }
}

void unit_numbers(float* mag, float* phase, const float* src, int n) {
    // Sine and cosine in one loop would become calls of sincosf().
    constexpr int tile_n = 512;
    float angle[tile_n];
    for (int first = 0; first < n; first += tile_n) {
        const int count = n - first < tile_n ? n - first : tile_n;
        angles(mag + first, angle, src + 2 * first, count);
        float* const out = phase + 2 * first;
        for (int i = 0; i < count; ++i) out[2 * i] = std::cos(angle[i]);
        for (int i = 0; i < count; ++i) out[2 * i + 1] = std::sin(angle[i]);
    }
}

}  // namespace

extern const ElementwisePeer peer;
const ElementwisePeer peer = {"libmvec:" SORVO_PEER_NAME, decibels, log1p, angles, unit_numbers};

}  // namespace sorvo::bench::SORVO_PEER_LEVEL
