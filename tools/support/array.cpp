#include "support/array.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>
#include <utility>

#include "support/byte_source.h"
#include "support/failure.h"

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

}  // namespace

std::string npy_header(const std::vector<std::size_t>& shape, bool is_complex) {
    std::string header = "{'descr': '" + std::string(is_complex ? "<c8" : "<f4") +
                         "', 'fortran_order': False, 'shape': (";
    for (const std::size_t length : shape) header += std::to_string(length) + ", ";
    if (shape.size() > 1) header.resize(header.size() - 2);
    header += "), }";
    // The data start at a multiple of 64 bytes, behind a line feed.
    header.resize((preamble_n + header.size() + 1 + 63) / 64 * 64 - preamble_n - 1, ' ');
    header += '\n';
    std::string bytes("\x93NUMPY\x01\x00", 8);
    bytes += static_cast<char>(header.size() & 0xff);
    bytes += static_cast<char>(header.size() >> 8);
    return bytes + header;
}

NpyFile::NpyFile(const std::string& path, std::unique_ptr<TemporaryFile> copy)
    : path_(path), copy_(std::move(copy)) {
    file_.reset(copy_ ? fdopen(dup(copy_->descriptor()), "rb") : std::fopen(path.c_str(), "rb"));
    if (!file_)
        throw Failure(Exit::input_failed, path,
                      std::string("cannot be opened: ") + std::strerror(errno), "",
                      "give an existing .npy file");
    parse_header();
}

void NpyFile::read_bytes(void* data, std::size_t n) {
    if (n > 0 && std::fread(data, 1, n, file_.get()) != n)
        throw bad_npy(path_, "is no .npy file, or shorter than its header says");
}

void NpyFile::parse_header() {
    std::fseek(file_.get(), 0, SEEK_END);
    const auto file_n = static_cast<std::size_t>(std::ftell(file_.get()));
    std::rewind(file_.get());
    std::string bytes(preamble_n + 2, '\0');
    read_bytes(bytes.data(), bytes.size());
    if (bytes.compare(0, 6, "\x93NUMPY") != 0) throw bad_npy(path_, "is no .npy file");

    const auto byte = [&](std::size_t i) {
        return static_cast<std::size_t>(static_cast<unsigned char>(bytes[i]));
    };
    // Version 1 has a header length of two bytes, later ones of four.
    const bool is_v1 = bytes[6] == 1;
    const std::size_t header_at = is_v1 ? preamble_n : preamble_n + 2;
    const std::size_t header_n =
        byte(8) | byte(9) << 8 | (is_v1 ? 0 : byte(10) << 16 | byte(11) << 24);
    if (header_n > file_n - header_at) throw bad_npy(path_, "has a damaged .npy header");
    std::string header(header_n, '\0');
    std::fseek(file_.get(), static_cast<long>(header_at), SEEK_SET);
    read_bytes(header.data(), header_n);
    const std::string descr = header_value(header, "descr", path_).substr(1, 3);
    if (header_value(header, "fortran_order", path_).compare(0, 5, "False") != 0)
        throw bad_npy(path_, "is stored column by column");
    is_complex_ = descr == "<c8" || descr == "<c1";  // the latter begins <c16
    is_double_ = descr == "<f8" || descr == "<c1";
    if (!is_complex_ && !is_double_ && descr != "<f4")
        throw bad_npy(path_, "holds elements that are neither floats nor complex");

    shape_ = parse_shape(header_value(header, "shape", path_), path_);
    float_n_ = is_complex_ ? 2 : 1;
    for (const std::size_t length : shape_) float_n_ *= length;
    data_at_ = header_at + header_n;
    if (file_n - data_at_ != float_n_ * (is_double_ ? 8 : 4))
        throw bad_npy(path_, "is longer or shorter than its header says");
}

template <typename Stored, typename Value>
void NpyFile::read_as(Value* values, std::size_t n, std::size_t at) {
    std::fseek(file_.get(), static_cast<long>(data_at_ + at * sizeof(Stored)), SEEK_SET);
    std::array<Stored, 4096> part{};
    for (std::size_t i = 0; i < n; i += part.size()) {
        const std::size_t part_n = std::min(part.size(), n - i);
        read_bytes(part.data(), part_n * sizeof(Stored));
        std::transform(part.begin(), part.begin() + static_cast<std::ptrdiff_t>(part_n), values + i,
                       [](Stored value) { return static_cast<Value>(value); });
    }
}

void NpyFile::read(float* values, std::size_t n, std::size_t at) {
    is_double_ ? read_as<double>(values, n, at) : read_as<float>(values, n, at);
}

void NpyFile::read(double* values, std::size_t n, std::size_t at) {
    is_double_ ? read_as<double>(values, n, at) : read_as<float>(values, n, at);
}

Array read_npy(const std::string& path) {
    std::unique_ptr<TemporaryFile> copy;
    if (is_pipe(path)) {
        ByteSource pipe(path);
        copy = copy_of(pipe);
    }
    NpyFile file(path, std::move(copy));
    Array array{file.shape(), file.is_complex(), std::vector<float>(file.float_n())};
    file.read(array.data.data(), file.float_n(), 0);
    return array;
}

}  // namespace sorvo_tool
