// Coverage-guided fuzzing: any export, with arguments and samples from the input's bytes. Buffers
// have the documented sizes exactly, so the address sanitizer sees every access beyond them.
#include <sorvo_audio.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "robustness/planned_call.h"

namespace {

using sorvo::audio::test::ArgumentSource;
using sorvo::audio::test::PlannedCall;

class Bytes : public ArgumentSource {
  public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    /// Mostly small; a first byte of 248 or more announces any 32 bits.
    int integer() override {
        const int first = byte();
        return first < 248 ? first : take<int>();
    }
    float real() override {
        const int first = byte();
        return first < 200 ? static_cast<float>(first) * 0.5F : take<float>();
    }
    int choice(int n) override { return byte() % n; }

    template <class Number>
    Number take() {
        Number number = {};
        const std::size_t n = size_ < sizeof number ? size_ : sizeof number;
        std::memcpy(&number, data_, n);
        data_ += n;
        size_ -= n;
        return number;
    }
    bool empty() const { return size_ == 0; }

  private:
    std::uint8_t byte() { return take<std::uint8_t>(); }

    const std::uint8_t* data_;
    std::size_t size_;
};

bool is_small(const PlannedCall& call) {
    double bytes = 0.0;
    for (const double b : call.buffer_bytes) {
        bytes += b;
    }
    return !call.valid || (bytes < 4e6 && call.work < 2e7 && call.storage < 6e7);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes source(data, size);
    const PlannedCall call = sorvo::audio::test::plan_call(source);
    if (!is_small(call)) {
        return 0;
    }
    std::vector<std::unique_ptr<float[]>> buffers;
    std::vector<void*> pointers;
    for (const double bytes : call.buffer_bytes) {
        const std::size_t n = call.valid ? static_cast<std::size_t>(bytes / 4.0) : 0;
        buffers.push_back(std::make_unique<float[]>(n));
        for (std::size_t i = 0; i < n && !source.empty(); ++i) {
            buffers.back()[i] = source.take<float>();
        }
        pointers.push_back(buffers.back().get());
    }
    const int status = call.invoke(pointers);
    const bool refused = status == SORVO_AUDIO_ERROR_ARGUMENT;
    if (refused == call.valid) {
        std::abort();  // the header says otherwise
    }
    return 0;
}
