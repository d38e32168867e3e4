// Headers of WAV streams. libsndfile takes no length beyond 4 GiB from them and writes them only
// where it can go back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "support/byte_source.h"

namespace sorvo_tool {

struct WavHeader {
    int sample_rate = 0;
    int channel_n = 0;
    int subtype = 0;  // SF_FORMAT_PCM_16, ...
    int bytes_a_sample = 0;
    std::optional<std::uint64_t> data_n;  // bytes of samples; none: up to the end of the stream
};

// Reads up to the first sample. Reads nothing of what is no WAV of plain integers or floats.
std::optional<WavHeader> read_wav_header(ByteSource& source);

// Up to the first sample; data_n is left open if it is unknown or too large for a WAV.
std::string wav_header_bytes(const WavHeader& header);

}  // namespace sorvo_tool
