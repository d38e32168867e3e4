#include "support/output_file.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace sorvo_tool {

namespace fs = std::filesystem;

Failure cannot_write(const std::string& path, const std::string& reason) {
    return {Exit::cannot_write, path, "cannot be written: " + reason, "",
            "give -o or --picture a place that can be written"};
}

void write_then_rename(const std::string& path,
                       const std::function<void(const std::string& temporary)>& write) {
    static std::atomic<unsigned> serial{0};
    const fs::path target(path);
    std::error_code error;
    if (target.has_parent_path()) fs::create_directories(target.parent_path(), error);
    if (error) throw cannot_write(path, error.message());

    const fs::path temporary =
        target.parent_path() / ("." + target.filename().string() + "." + std::to_string(getpid()) +
                                "-" + std::to_string(serial++) + ".part");
    try {
        write(temporary.string());
    } catch (...) {
        fs::remove(temporary, error);
        throw;
    }
    fs::rename(temporary, target, error);
    if (error) {
        const std::string reason = error.message();
        fs::remove(temporary, error);
        throw cannot_write(path, reason);
    }
}

void write_bytes(const std::string& path, const std::string& bytes) {
    write_then_rename(path, [&](const std::string& temporary) {
        errno = 0;
        std::ofstream file(temporary, std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (!file) throw cannot_write(path, std::strerror(errno));
    });
}

}  // namespace sorvo_tool
