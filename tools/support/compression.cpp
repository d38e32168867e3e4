#include "support/compression.h"

#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <stdexcept>

#include "support/failure.h"

namespace sorvo_tool {
namespace {

int float_count(const std::vector<float>& values, const std::string& file) {
    if (values.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw Failure(Exit::input_failed, file,
                      "has " + std::to_string(values.size()) + " cells, too many for logarithms",
                      "limit 2147483647", "split the sound, or give --linear");
    return static_cast<int>(values.size());
}

// log(1 + x) is accurate near 0, so log(x) is computed from 1 on, and below as -log(1 / x).
void to_logarithms(std::vector<float>& values, float floor, const std::string& file) {
    std::vector<float> result(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const float held = values[i] < floor ? floor : values[i];
        values[i] = held;
        result[i] = (held < 1 ? 1 / held : held) - 1;
    }
    check_status(sorvoAudioLog1p(result.data(), result.data(), float_count(result, file)),
                 "sorvoAudioLog1p", file);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = values[i] < 1 ? -result[i] : result[i];
}

}  // namespace

Compression compression_of(const std::string& word) {
    if (word.empty()) return Compression::none;
    for (const Compression known : {Compression::none, Compression::log, Compression::whisper})
        if (word == word_of(known)) return known;
    throw std::invalid_argument("the table of presets has a compression " + word);
}

std::string word_of(Compression compression) {
    if (compression == Compression::log) return "log";
    return compression == Compression::whisper ? "whisper" : "none";
}

float largest_of(const std::vector<float>& values, float so_far) {
    for (const float value : values)
        if (value > so_far || std::isnan(value)) so_far = value;  // nothing is larger than NaN
    return so_far;
}

void to_levels(std::vector<float>& powers, float largest, const std::string& file) {
    if (std::isnan(largest)) {
        std::fill(powers.begin(), powers.end(), largest);
        return;
    }
    // The decibels that the library gives are relative to the largest value, and so are those of a
    // 1 behind the powers; the difference of the two is not.
    powers.insert(powers.end(), {largest, 1});
    check_status(
        sorvoAudioConvertPowerToDB(powers.data(), powers.data(), float_count(powers, file), -1),
        "sorvoAudioConvertPowerToDB", file);
    const float of_one = powers.back();
    const float floor = *(powers.end() - 2) - of_one - 80;
    powers.resize(powers.size() - 2);
    for (float& value : powers) value = std::max(value - of_one, floor);
}

void compress(std::vector<float>& bands, Compression compression, float largest,
              const std::string& file) {
    if (compression == Compression::log) to_logarithms(bands, 1e-5f, file);
    if (compression == Compression::whisper) {
        to_levels(bands, largest, file);
        for (float& value : bands) value = (value + 40) / 40;
    }
}

}  // namespace sorvo_tool
