#include "support/array.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>

#include "support/failure.h"
#include "support/output_file.h"

namespace sorvo_tool {
namespace {

constexpr std::size_t preamble_n = 10;  // "\x93NUMPY", version, length of the header
const char* const save_plainly = "save it with numpy.save(path, numpy.ascontiguousarray(x))";

Failure bad_npy(const std::string& path, const std::string& problem) {
    return {Exit::input_failed, path, problem, "", save_plainly};
}

// The text that follows 'key': in the header of a .npy file.
std::string header_value(const std::string& header, const std::string& key,
                         const std::string& path) {
    const std::size_t at = header.find("'" + key + "':");
    if (at == std::string::npos) throw bad_npy(path, "has a damaged .npy header");
    return header.substr(header.find_first_not_of(' ', at + key.size() + 3));
}

std::vector<std::size_t> parse_shape(const std::string& text, const std::string& path) {
    std::vector<std::size_t> shape;
    std::size_t element_n = 1;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end && *at != ')') {
        if (*at == '(' || *at == ',' || *at == ' ') {
            ++at;
            continue;
        }
        std::size_t length = 0;
        const auto parsed = std::from_chars(at, end, length);
        if (parsed.ec != std::errc() ||
            (length > 0 && element_n > std::numeric_limits<std::size_t>::max() / 64 / length))
            throw bad_npy(path, "has a damaged .npy header");
        element_n *= length;
        shape.push_back(length);
        at = parsed.ptr;
    }
    return shape;
}

void append_number(std::string& text, float value, bool with_sign) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    if (with_sign && digits[0] != '-') text += '+';
    text.append(digits.data(), end.ptr);
}

}  // namespace

void write_npy(const std::string& path, const Array& array) {
    std::string header = "{'descr': '" + std::string(array.is_complex ? "<c8" : "<f4") +
                         "', 'fortran_order': False, 'shape': (";
    for (const std::size_t length : array.shape) header += std::to_string(length) + ", ";
    if (array.shape.size() > 1) header.resize(header.size() - 2);
    header += "), }";
    // The data start at a multiple of 64 bytes, behind a line feed.
    header.resize((preamble_n + header.size() + 1 + 63) / 64 * 64 - preamble_n - 1, ' ');
    header += '\n';

    const std::size_t data_n = array.data.size() * sizeof(float);
    std::string bytes("\x93NUMPY\x01\x00", 8);
    bytes += static_cast<char>(header.size() & 0xff);
    bytes += static_cast<char>(header.size() >> 8);
    bytes += header;
    const std::size_t start = bytes.size();
    bytes.resize(start + data_n);
    if (data_n > 0) std::memcpy(&bytes[start], array.data.data(), data_n);
    write_bytes(path, bytes);
}

void write_csv(const std::string& path, const Array& array) {
    const std::size_t row_n = array.shape.size() > 1 ? array.shape[0] : 1;
    const std::size_t column_n = array.shape.back();
    std::string text;
    const float* value = array.data.data();
    for (std::size_t row = 0; row < row_n; ++row) {
        for (std::size_t column = 0; column < column_n; ++column) {
            if (column > 0) text += ',';
            append_number(text, *value++, false);
            if (array.is_complex) {
                append_number(text, *value++, true);
                text += 'j';
            }
        }
        text += '\n';
    }
    write_bytes(path, text);
}

Array read_npy(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw Failure(Exit::input_failed, path,
                      std::string("cannot be opened: ") + std::strerror(errno), "",
                      "give an existing .npy file");
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    if (bytes.size() < preamble_n + 2 || bytes.compare(0, 6, "\x93NUMPY") != 0)
        throw bad_npy(path, "is no .npy file");

    const auto byte = [&](std::size_t i) {
        return static_cast<std::size_t>(static_cast<unsigned char>(bytes[i]));
    };
    // Version 1 has a header length of two bytes, later ones of four.
    const bool is_v1 = bytes[6] == 1;
    const std::size_t header_at = is_v1 ? preamble_n : preamble_n + 2;
    const std::size_t header_n =
        byte(8) | byte(9) << 8 | (is_v1 ? 0 : byte(10) << 16 | byte(11) << 24);
    if (header_n > bytes.size() - header_at) throw bad_npy(path, "has a damaged .npy header");
    const std::string header = bytes.substr(header_at, header_n);
    const std::string descr = header_value(header, "descr", path).substr(1, 3);
    if (header_value(header, "fortran_order", path).compare(0, 5, "False") != 0)
        throw bad_npy(path, "is stored column by column");
    const bool is_complex = descr == "<c8" || descr == "<c1";  // the latter begins <c16
    const bool is_double = descr == "<f8" || descr == "<c1";
    if (!is_complex && !is_double && descr != "<f4")
        throw bad_npy(path, "holds elements that are neither floats nor complex");

    Array array;
    array.shape = parse_shape(header_value(header, "shape", path), path);
    array.is_complex = is_complex;
    std::size_t float_n = is_complex ? 2 : 1;
    for (const std::size_t length : array.shape) float_n *= length;
    const char* data = bytes.data() + header_at + header_n;
    if (bytes.size() - header_at - header_n != float_n * (is_double ? 8 : 4))
        throw bad_npy(path, "is longer or shorter than its header says");
    array.data.resize(float_n);
    for (std::size_t i = 0; is_double && i < float_n; ++i) {
        double value = 0;
        std::memcpy(&value, data + i * sizeof(double), sizeof(double));
        array.data[i] = static_cast<float>(value);
    }
    if (!is_double && float_n > 0) std::memcpy(array.data.data(), data, float_n * sizeof(float));
    return array;
}

}  // namespace sorvo_tool
