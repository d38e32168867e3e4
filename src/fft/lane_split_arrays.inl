// Complex elements with real and imaginary parts apart.
#pragma once

#include "util/lanes.inl"

namespace sorvo::audio {
namespace {

struct SplitArrays {
    float* re;
    float* im;

    SORVO_INLINE Complex load_at(std::size_t i) const { return {load(re + i), load(im + i)}; }
    SORVO_INLINE void store_at(std::size_t i, Complex value) const {
        store(re + i, value.re);
        store(im + i, value.im);
    }
};

}  // namespace
}  // namespace sorvo::audio
