#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>

namespace sorvo::audio::test {

/// Memory between two inaccessible pages; it ends at the upper one, or starts at the lower one.
/// Pages that nobody touches take no memory, so a buffer may be of any documented size.
class GuardedBuffer {
  public:
    enum class Against { lower_page, upper_page };

    GuardedBuffer(std::size_t bytes, Against against) {
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        const std::size_t inner = (bytes + page - 1) / page * page;
        mapped_bytes_ = inner + 2 * page;
        mapping_ = ::mmap(nullptr, mapped_bytes_, PROT_NONE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (mapping_ == MAP_FAILED) {
            throw std::bad_alloc();
        }
        char* const begin = static_cast<char*>(mapping_) + page;
        if (inner > 0 && ::mprotect(begin, inner, PROT_READ | PROT_WRITE) != 0) {
            throw std::bad_alloc();
        }
        data_ = against == Against::lower_page ? begin : begin + inner - bytes;
    }
    ~GuardedBuffer() { ::munmap(mapping_, mapped_bytes_); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    void* data() const { return data_; }
    float* floats() const { return static_cast<float*>(data()); }

  private:
    void* mapping_ = nullptr;
    std::size_t mapped_bytes_ = 0;
    char* data_ = nullptr;
};

}  // namespace sorvo::audio::test
