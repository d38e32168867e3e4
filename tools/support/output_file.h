// Files appear under their name only when they are complete; streams take bytes as they come.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "support/failure.h"

namespace sorvo_tool {

// True for "-", the standard output, and for names of pipes and devices.
bool is_stream(const std::string& path);

Failure cannot_write(const std::string& path, const std::string& reason);

// A temporary name beside `path`, in a folder that is made if it is missing. Unless commit() is
// called, no file is left behind.
class PendingFile {
  public:
    explicit PendingFile(std::string path);
    ~PendingFile();
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    const std::string& temporary() const { return temporary_; }
    void commit();  // renames the file to `path`, or copies it into the stream

  private:
    std::string path_;
    std::string temporary_;
};

// Bytes on their way to a pending file or into a stream.
class OutputFile {
  public:
    explicit OutputFile(std::string path);

    void write(const void* data, std::size_t n);
    void write(const std::string& bytes) { write(bytes.data(), bytes.size()); }
    void commit();

  private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::string path_;
    std::unique_ptr<PendingFile> pending_;  // none for streams
    std::unique_ptr<std::FILE, Close> file_;
};

// Calls `write` with a temporary name, and commits the file.
void write_then_rename(const std::string& path,
                       const std::function<void(const std::string& temporary)>& write);

}  // namespace sorvo_tool
