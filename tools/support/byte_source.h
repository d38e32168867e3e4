// The bytes of a file or pipe, in order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "support/temporary_file.h"

namespace sorvo_tool {

class ByteSource {
  public:
    explicit ByteSource(const std::string& path);  // "-": the standard input
    ~ByteSource();
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    // The next bytes, which are still read afterwards; fewer than n only at the end.
    const std::string& peek(std::size_t n);
    // Fewer than n only at the end.
    std::size_t read(void* data, std::size_t n);
    std::uint64_t position() const { return position_; }  // bytes that have been read

  private:
    std::size_t read_file(char* data, std::size_t n);

    std::string path_;
    int descriptor_;
    std::string ahead_;
    std::uint64_t position_ = 0;
};

// True for "-" and for names of pipes: what can be read once, from the beginning to the end.
bool is_pipe(const std::string& path);

// The rest of a pipe, for readers that must go back and forth.
std::unique_ptr<TemporaryFile> copy_of(ByteSource& bytes);

}  // namespace sorvo_tool
