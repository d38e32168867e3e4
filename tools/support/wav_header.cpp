#include "support/wav_header.h"

#include <sndfile.h>

namespace sorvo_tool {
namespace {

constexpr std::uint64_t unknown_n = 0xffffffff;
// Programs that write into pipes leave the length at this or more.
constexpr std::uint64_t least_unknown_n = 0x7ffff000;
constexpr std::size_t most_header_n = 1 << 20;

// An unsigned number, its lowest byte first.
std::uint64_t number_at(const std::string& bytes, std::size_t at, std::size_t byte_n) {
    std::uint64_t value = 0;
    for (std::size_t i = byte_n; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

void append_number(std::string& bytes, std::uint64_t value, std::size_t byte_n) {
    for (std::size_t i = 0; i < byte_n; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xff);
}

int subtype_of(std::uint64_t tag, int bit_n) {
    if (tag == 3) return bit_n == 32 ? SF_FORMAT_FLOAT : bit_n == 64 ? SF_FORMAT_DOUBLE : 0;
    if (tag != 1) return 0;
    return bit_n == 8    ? SF_FORMAT_PCM_U8
           : bit_n == 16 ? SF_FORMAT_PCM_16
           : bit_n == 24 ? SF_FORMAT_PCM_24
           : bit_n == 32 ? SF_FORMAT_PCM_32
                         : 0;
}

// What a "fmt " chunk says, from behind its length; a subtype of 0 for what is not plain.
WavHeader parse_format(const std::string& bytes, std::size_t at, std::uint64_t length) {
    WavHeader header;
    if (length < 16) return header;
    std::uint64_t tag = number_at(bytes, at, 2);
    constexpr std::uint64_t extensible = 0xfffe;  // the tag proper follows
    if (tag == extensible && length >= 26) tag = number_at(bytes, at + 24, 2);
    header.channel_n = static_cast<int>(number_at(bytes, at + 2, 2));
    const std::uint64_t rate = number_at(bytes, at + 4, 4);
    const int bit_n = static_cast<int>(number_at(bytes, at + 14, 2));
    header.bytes_a_sample = bit_n / 8;
    header.sample_rate = static_cast<int>(rate & 0x7fffffff);
    const bool is_plain =
        rate > 0 && rate == (rate & 0x7fffffff) && header.channel_n > 0 &&
        header.channel_n <= 1024 &&
        static_cast<int>(number_at(bytes, at + 12, 2)) == header.channel_n * header.bytes_a_sample;
    header.subtype = is_plain ? subtype_of(tag, bit_n) : 0;
    return header;
}

}  // namespace

std::optional<WavHeader> read_wav_header(ByteSource& source) {
    const std::string& bytes = source.peek(12);
    const bool is_rf64 = bytes.compare(0, 4, "RF64") == 0;
    if (bytes.size() < 12 || (!is_rf64 && bytes.compare(0, 4, "RIFF") != 0) ||
        bytes.compare(8, 4, "WAVE") != 0)
        return std::nullopt;
    WavHeader header;
    std::uint64_t long_data_n = unknown_n;
    for (std::size_t at = 12; at < most_header_n;) {
        if (source.peek(at + 8).size() < at + 8) return std::nullopt;
        const std::string name = bytes.substr(at, 4);
        const std::uint64_t length = number_at(bytes, at + 4, 4);
        at += 8;
        if (name == "data") {
            if (header.subtype == 0) return std::nullopt;
            const std::uint64_t data_n = is_rf64 && length == unknown_n ? long_data_n : length;
            if ((is_rf64 && data_n != unknown_n) || data_n < least_unknown_n)
                header.data_n = data_n;
            std::string head(at, '\0');
            source.read(head.data(), at);
            return header;
        }
        if (length > most_header_n || source.peek(at + length).size() < at + length)
            return std::nullopt;
        if (name == "fmt ") header = parse_format(bytes, at, length);
        // 0 where a pipe left no way back to it.
        if (name == "ds64" && length >= 16 && number_at(bytes, at + 8, 8) > 0)
            long_data_n = number_at(bytes, at + 8, 8);
        at += length + length % 2;
    }
    return std::nullopt;
}

std::string wav_header_bytes(const WavHeader& header) {
    const bool is_float = header.subtype == SF_FORMAT_FLOAT;
    const int frame_bytes_n = header.channel_n * header.bytes_a_sample;
    const std::uint64_t head_n = is_float ? 50 : 36;  // behind the length of the whole
    const std::uint64_t data_n = header.data_n.value_or(unknown_n);
    const bool is_known = data_n + data_n % 2 + head_n < unknown_n;
    std::string bytes = "RIFF";
    append_number(bytes, is_known ? data_n + data_n % 2 + head_n : unknown_n, 4);
    bytes += "WAVEfmt ";
    append_number(bytes, is_float ? 18 : 16, 4);
    append_number(bytes, is_float ? 3 : 1, 2);
    append_number(bytes, static_cast<std::uint64_t>(header.channel_n), 2);
    append_number(bytes, static_cast<std::uint64_t>(header.sample_rate), 4);
    append_number(
        bytes,
        static_cast<std::uint64_t>(header.sample_rate) * static_cast<std::uint64_t>(frame_bytes_n),
        4);
    append_number(bytes, static_cast<std::uint64_t>(frame_bytes_n), 2);
    append_number(bytes, static_cast<std::uint64_t>(header.bytes_a_sample) * 8, 2);
    if (is_float) {  // a format other than integers has an extension, and its length in samples
        append_number(bytes, 0, 2);
        bytes += "fact";
        append_number(bytes, 4, 4);
        append_number(bytes,
                      is_known ? data_n / static_cast<std::uint64_t>(frame_bytes_n) : unknown_n, 4);
    }
    bytes += "data";
    append_number(bytes, is_known ? data_n : unknown_n, 4);
    return bytes;
}

}  // namespace sorvo_tool
