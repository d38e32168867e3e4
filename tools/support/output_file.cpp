#include "support/output_file.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "support/temporary_file.h"

namespace sorvo_tool {

namespace fs = std::filesystem;

bool is_stream(const std::string& path) {
    if (path == "-") return true;
    // /dev/stdout and /dev/fd/1 must not be replaced, even where they lead to a plain file.
    const fs::path folder = fs::path(path).parent_path();
    if (folder == "/dev" || folder == "/dev/fd" || folder == "/proc/self/fd") return true;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

Failure cannot_write(const std::string& path, const std::string& reason) {
    return {Exit::cannot_write, path == "-" ? "standard output" : path,
            "cannot be written: " + reason, "", "give -o or --picture a place that can be written"};
}

PendingFile::PendingFile(std::string path) : path_(std::move(path)) {
    static std::atomic<unsigned> serial{0};
    const std::string name = is_stream(path_) ? "stream" : fs::path(path_).filename().string();
    temporary_ =
        (fs::path(folder_for_temporaries(path_)) /
         ("." + name + "." + std::to_string(getpid()) + "-" + std::to_string(serial++) + ".part"))
            .string();
}

PendingFile::~PendingFile() {
    std::error_code error;
    if (!temporary_.empty()) fs::remove(temporary_, error);
}

void PendingFile::commit() {
    if (is_stream(path_)) {
        std::ifstream made(temporary_, std::ios::binary);
        OutputFile stream(path_);
        std::array<char, 1 << 16> part{};
        while (made.read(part.data(), part.size()) || made.gcount() > 0)
            stream.write(part.data(), static_cast<std::size_t>(made.gcount()));
        stream.commit();
        return;
    }
    std::error_code error;
    fs::rename(temporary_, path_, error);
    if (error) throw cannot_write(path_, error.message());
    temporary_.clear();
}

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
    if (path_ == "-") {
        file_.reset(fdopen(dup(STDOUT_FILENO), "wb"));
    } else if (is_stream(path_)) {
        file_.reset(std::fopen(path_.c_str(), "wb"));
    } else {
        pending_ = std::make_unique<PendingFile>(path_);
        file_.reset(std::fopen(pending_->temporary().c_str(), "wb"));
    }
    if (!file_) throw cannot_write(path_, std::strerror(errno));
}

void OutputFile::write(const void* data, std::size_t n) {
    if (n > 0 && std::fwrite(data, 1, n, file_.get()) != n)
        throw cannot_write(path_, std::strerror(errno));
}

void OutputFile::commit() {
    if (std::fclose(file_.release()) != 0) throw cannot_write(path_, std::strerror(errno));
    if (pending_) pending_->commit();
}

void write_then_rename(const std::string& path,
                       const std::function<void(const std::string& temporary)>& write) {
    PendingFile pending(path);
    write(pending.temporary());
    pending.commit();
}

}  // namespace sorvo_tool
