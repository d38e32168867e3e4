#include "support/temporary_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "support/output_file.h"

namespace sorvo_tool {

namespace fs = std::filesystem;

std::string folder_for_temporaries(const std::string& output) {
    if (is_stream(output)) {
        const char* const chosen = std::getenv("TMPDIR");
        return chosen != nullptr && chosen[0] != '\0' ? chosen : "/var/tmp";
    }
    const fs::path folder = fs::path(output).parent_path();
    std::error_code error;
    if (!folder.empty()) fs::create_directories(folder, error);
    if (error) throw cannot_write(output, error.message());
    return folder.empty() ? "." : folder.string();
}

TemporaryFile::TemporaryFile(const std::string& folder) : folder_(folder) {
    std::string name = folder + "/.sorvo-audio-XXXXXX";
    descriptor_ = mkstemp(name.data());
    if (descriptor_ < 0)
        throw Failure(Exit::cannot_write, folder,
                      std::string("takes no temporary file: ") + std::strerror(errno), "",
                      "set TMPDIR to a folder that can be written");
    unlink(name.c_str());
}

TemporaryFile::~TemporaryFile() {
    close(descriptor_);
}

void TemporaryFile::append(const void* data, std::size_t n) {
    const char* at = static_cast<const char*>(data);
    while (n > 0) {
        const ssize_t written_n = pwrite(descriptor_, at, n, static_cast<off_t>(size_));
        if (written_n < 0 && errno == EINTR) continue;
        if (written_n <= 0)
            throw Failure(Exit::cannot_write, folder_,
                          std::string("has no room for a temporary file: ") + std::strerror(errno),
                          "", "free the disk, or set TMPDIR to another one");
        at += written_n;
        n -= static_cast<std::size_t>(written_n);
        size_ += static_cast<std::uint64_t>(written_n);
    }
}

void TemporaryFile::read(void* data, std::size_t n, std::uint64_t at) const {
    char* to = static_cast<char*>(data);
    while (n > 0) {
        const ssize_t read_n = pread(descriptor_, to, n, static_cast<off_t>(at));
        if (read_n < 0 && errno == EINTR) continue;
        if (read_n <= 0)
            throw Failure(
                Exit::internal, folder_,
                std::string("does not give a temporary file back: ") + std::strerror(errno), "",
                "look at the disk");
        to += read_n;
        at += static_cast<std::uint64_t>(read_n);
        n -= static_cast<std::size_t>(read_n);
    }
}

}  // namespace sorvo_tool
