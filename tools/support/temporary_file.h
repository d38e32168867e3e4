// Room on disk for what does not fit into memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace sorvo_tool {

// The folder of `output`, which is made if it is missing; for a stream that of temporary files.
std::string folder_for_temporaries(const std::string& output);

// A file without a name, which is gone when the program ends, however it ends.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& folder);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void append(const void* data, std::size_t n);
    void read(void* data, std::size_t n, std::uint64_t at) const;  // which has been appended
    std::uint64_t size() const { return size_; }
    int descriptor() const { return descriptor_; }

  private:
    std::string folder_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

}  // namespace sorvo_tool
