#include "digest/digest.h"

#include <sorvo_audio.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

#include "digest/sum.h"

namespace sorvo_tool {
namespace {

float float_of(std::uint32_t bits) {
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

// Without streams, which the C++ runtime does not have wherever the library runs.
std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t first = 0; first < text.size();) {
        const std::size_t end = std::min(text.find(separator, first), text.size());
        if (end > first) parts.push_back(text.substr(first, end - first));
        first = end + 1;
    }
    return parts;
}

double number(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0') throw std::invalid_argument("no number: " + text);
    return value;
}

float noise_of(std::uint64_t h) {
    return std::ldexp(static_cast<float>(static_cast<int>(h >> 40U) - (1 << 23)), -23);
}

// Products with powers of two, so that every element is exact.
std::vector<float> make_array(const std::string& kind, std::size_t n) {
    constexpr float burst_levels[] = {1.0F, 0x1p-5F, 0x1p-12F, 0.0F};
    constexpr std::uint32_t specials[] = {0x7FC00000U, 0x7F800000U, 0xFF800000U, 0x00000000U,
                                          0x80000000U, 0x7F7FFFFFU, 0x00800000U, 0x80000001U};
    using Element = std::function<float(std::size_t i, std::uint64_t h)>;
    const std::map<std::string, Element> kinds = {
        {"noise", [](auto, auto h) { return noise_of(h); }},
        {"power",
         [](auto, auto h) {
             return std::ldexp(std::fabs(noise_of(h)), -static_cast<int>(h & 31U));
         }},
        {"spread",
         [](auto, auto h) { return std::ldexp(noise_of(h), -static_cast<int>(h & 63U)); }},
        {"bursts", [&](auto i, auto h) { return noise_of(h) * burst_levels[mix(i / 1024) & 3U]; }},
        {"holes", [](auto i, auto h) { return (mix(i / 16) & 1U) != 0 ? 0.0F : noise_of(h); }},
        {"huge", [](auto, auto h) { return noise_of(h) * 0x1p127F; }},
        {"tiny", [](auto, auto h) { return noise_of(h) * 0x1p-126F; }},
        {"special",
         [&](auto, auto h) {
             return (h & 31U) == 0 ? float_of(specials[(h >> 5U) & 7U]) : noise_of(h);
         }},
        {"bits", [](auto, auto h) { return float_of(static_cast<std::uint32_t>(h >> 32U)); }},
        {"ramp", [](auto i, auto) { return std::ldexp(static_cast<float>(i), -10); }},
        {"impulse", [n](auto i, auto) { return i == n / 3 ? 1.0F : 0.0F; }},
    };
    if (kind.rfind("fill:", 0) == 0)
        return std::vector<float>(n, static_cast<float>(number(kind.substr(5))));
    std::vector<float> array;
    const Element& element = kinds.at(kind);
    for (std::size_t i = 0; i < n; ++i) array.push_back(element(i, mix(i)));
    return array;
}

struct Argument {
    std::string text;
    std::shared_ptr<std::vector<float>> array = nullptr;
    int integer = 0;
    bool output = false;

    template <class Parameter>
    Parameter as() {
        if constexpr (std::is_same_v<Parameter, float>)
            return static_cast<float>(number(text));
        else if constexpr (std::is_same_v<Parameter, int>)
            return static_cast<int>(number(text));
        else if constexpr (std::is_same_v<Parameter, int*>)
            return &integer;
        else
            return array ? array->data() : nullptr;
    }
};

// "name:rest" begins with the name.
bool take_prefix(std::string& text, const std::string& name) {
    if (text.rfind(name + ':', 0) != 0) return false;
    text.erase(0, name.size() + 1);
    return true;
}

Argument make_argument(const std::string& text, const std::vector<Argument>& before) {
    Argument argument{text};
    std::string kind = text;
    if (kind == "same") {
        argument.array = before.at(0).array;
    } else if (kind == "int") {
        argument.output = true;
    } else if (kind.front() == '[') {
        argument.array = std::make_shared<std::vector<float>>();
        for (const std::string& value : split(kind.substr(1, kind.size() - 2), ','))
            argument.array->push_back(static_cast<float>(number(value)));
    } else if (kind.find(':') != std::string::npos) {
        argument.output = take_prefix(kind, "inout");
        if (take_prefix(kind, "out")) {
            argument.output = true;
            kind.insert(0, "fill:0.25:");
        }
        const std::size_t colon = kind.rfind(':');
        const auto n = static_cast<std::size_t>(number(kind.substr(colon + 1)));
        argument.array = std::make_shared<std::vector<float>>(make_array(kind.substr(0, colon), n));
    }
    return argument;
}

using Function = std::function<int(std::vector<Argument>&)>;

template <class... Parameters, std::size_t... i>
int call(int (*function)(Parameters...), std::vector<Argument>& arguments,
         std::index_sequence<i...> /*all*/) {
    return function(arguments[i].as<Parameters>()...);
}

template <class... Parameters>
Function callable(int (*function)(Parameters...)) {
    return [function](std::vector<Argument>& arguments) {
        if (arguments.size() != sizeof...(Parameters))
            throw std::invalid_argument("another number of arguments than the function has");
        return call(function, arguments, std::index_sequence_for<Parameters...>());
    };
}

const std::map<std::string, Function>& functions() {
    static const std::map<std::string, Function> all = {
        {"FFT", callable(sorvoAudioFFT)},
        {"IFFT", callable(sorvoAudioIFFT)},
        {"GetWindow", callable(sorvoAudioGetWindow)},
        {"GetFrameLen", callable(sorvoAudioGetFrameLen)},
        {"GetSpectrogram", callable(sorvoAudioGetSpectrogram)},
        {"GetInverseSpectrogram", callable(sorvoAudioGetInverseSpectrogram)},
        {"GetSampleLen", callable(sorvoAudioGetSampleLen)},
        {"GetFBMatrix", callable(sorvoAudioGetFBMatrix)},
        {"GetMelSpectrogram", callable(sorvoAudioGetMelSpectrogram)},
        {"ConvertToMel", callable(sorvoAudioConvertToMel)},
        {"LinerFilter", callable(sorvoAudioLinerFilter)},
        {"GetLinerFilterZiCoef", callable(sorvoAudioGetLinerFilterZiCoef)},
        {"FilterFilter", callable(sorvoAudioFilterFilter)},
        {"Resample", callable(sorvoAudioResample)},
        {"GetResampleLen", callable(sorvoAudioGetResampleLen)},
        {"ComplexNorm", callable(sorvoAudioComplexNorm)},
        {"MagPhase", callable(sorvoAudioMagPhase)},
        {"ConvertPowerToDB", callable(sorvoAudioConvertPowerToDB)},
        {"Log1p", callable(sorvoAudioLog1p)},
        {"Standardize", callable(sorvoAudioStandardize)},
        {"GetNonSilentPos", callable(sorvoAudioGetNonSilentPos)},
        {"FixFrameLen", callable(sorvoAudioFixFrameLen)},
    };
    return all;
}

void add(Sum& sum, const Argument& output) {
    if (!output.array) return sum.add(static_cast<std::uint32_t>(output.integer));
    for (const float value : *output.array) sum.add(value);
}

void add_call(Sum& sum, const std::vector<std::string>& words) {
    std::vector<Argument> arguments;
    for (std::size_t i = 1; i < words.size(); ++i)
        arguments.push_back(make_argument(words[i], arguments));
    sum.add(static_cast<std::uint32_t>(functions().at(words[0])(arguments)));
    for (const Argument& argument : arguments)
        if (argument.output) add(sum, argument);
}

}  // namespace

std::vector<Digest> make_digests(const std::vector<const char*>& calls) {
    std::vector<std::string> names;
    std::map<std::string, Sum> sums;
    for (const char* const line : calls) {
        const std::vector<std::string> words = split(line, ' ');
        if (words.empty() || words[0].front() == '#') continue;
        const std::string& name = words[0];
        if (sums.find(name) == sums.end()) names.push_back(name);
        try {
            add_call(sums[name], words);
        } catch (const std::logic_error& error) {
            throw std::runtime_error(std::string(error.what()) + " in the call '" + line + "'");
        }
    }
    std::vector<Digest> digests;
    std::uint64_t all = 0;
    for (const std::string& name : names) {
        digests.push_back({"sorvoAudio" + name, sums[name].value()});
        all = mix(all ^ digests.back().value);
    }
    digests.push_back({"all", all});
    return digests;
}

}  // namespace sorvo_tool
