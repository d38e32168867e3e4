#include "fft_engine/scratch.h"

namespace sorvo::audio::kelpon::fft {

float* thread_scratch(std::size_t float_n) {
    thread_local AlignedFloats storage;
    if (storage.size() < float_n) {
        storage = AlignedFloats();  // freed first: its content is not needed any more
        storage.resize(float_n);
    }
    return storage.data();
}

}  // namespace sorvo::audio::kelpon::fft
