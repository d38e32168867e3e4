// Arrays of floats in NumPy's .npy files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "support/temporary_file.h"

namespace sorvo_tool {

// Row-major. A complex array holds (real, imaginary) pairs, as the library writes them; its shape
// counts pairs.
struct Array {
    std::vector<std::size_t> shape;
    bool is_complex = false;
    std::vector<float> data;
};

// What a .npy file of float32 or complex64 begins with.
std::string npy_header(const std::vector<std::size_t>& shape, bool is_complex);

// Real or complex numbers, single or double precision, in a file or in the copy of a pipe.
class NpyFile {
  public:
    NpyFile(const std::string& path, std::unique_ptr<TemporaryFile> copy);

    const std::vector<std::size_t>& shape() const { return shape_; }
    bool is_complex() const { return is_complex_; }
    std::size_t float_n() const { return float_n_; }
    // Values, of which pairs hold two, from the one at `at` on.
    void read(float* values, std::size_t n, std::size_t at);
    void read(double* values, std::size_t n, std::size_t at);

  private:
    void parse_header();
    void read_bytes(void* data, std::size_t n);
    template <typename Stored, typename Value>
    void read_as(Value* values, std::size_t n, std::size_t at);

    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::string path_;
    std::unique_ptr<TemporaryFile> copy_;
    std::unique_ptr<std::FILE, Close> file_;
    std::vector<std::size_t> shape_;
    bool is_complex_ = false;
    bool is_double_ = false;
    std::size_t float_n_ = 1;
    std::size_t data_at_ = 0;
};

// All of a file; "-" is the standard input.
Array read_npy(const std::string& path);

}  // namespace sorvo_tool
