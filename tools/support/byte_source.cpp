#include "support/byte_source.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

#include "support/failure.h"

namespace sorvo_tool {

bool is_pipe(const std::string& path) {
    if (path == "-") return true;
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
           !std::filesystem::is_directory(status);
}

ByteSource::ByteSource(const std::string& path)
    : path_(path),
      descriptor_(path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0)
        throw Failure(Exit::input_failed, path,
                      std::string("cannot be opened: ") + std::strerror(errno), "",
                      "give a file that can be read");
}

ByteSource::~ByteSource() {
    close(descriptor_);
}

const std::string& ByteSource::peek(std::size_t n) {
    if (ahead_.size() < n) {
        const std::size_t before_n = ahead_.size();
        ahead_.resize(n);
        ahead_.resize(before_n + read_file(&ahead_[before_n], n - before_n));
    }
    return ahead_;
}

std::size_t ByteSource::read(void* data, std::size_t n) {
    char* const to = static_cast<char*>(data);
    const std::size_t ahead_n = std::min(n, ahead_.size());
    std::memcpy(to, ahead_.data(), ahead_n);
    ahead_.erase(0, ahead_n);
    const std::size_t read_n = ahead_n + read_file(to + ahead_n, n - ahead_n);
    position_ += read_n;
    return read_n;
}

std::size_t ByteSource::read_file(char* data, std::size_t n) {
    std::size_t done_n = 0;
    while (done_n < n) {
        const ssize_t read_n = ::read(descriptor_, data + done_n, n - done_n);
        if (read_n < 0 && errno == EINTR) continue;
        if (read_n < 0)
            throw Failure(Exit::input_failed, path_,
                          std::string("cannot be read: ") + std::strerror(errno), "",
                          "give a file that can be read");
        if (read_n == 0) break;
        done_n += static_cast<std::size_t>(read_n);
    }
    return done_n;
}

std::unique_ptr<TemporaryFile> copy_of(ByteSource& bytes) {
    auto copy = std::make_unique<TemporaryFile>(folder_for_temporaries("-"));
    std::vector<char> part(1 << 16);
    while (const std::size_t n = bytes.read(part.data(), part.size())) copy->append(part.data(), n);
    return copy;
}

}  // namespace sorvo_tool
